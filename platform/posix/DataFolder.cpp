#include "platform/system/DataFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace zeb {
namespace {

constexpr char kSystemFolder[] = "/var/lib/zeb";

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string UserHome() {
  if (std::string home = Variable("HOME"); !home.empty()) return home;
  const passwd* user = getpwuid(getuid());
  return user == nullptr || user->pw_dir == nullptr ? "" : user->pw_dir;
}

}  // namespace

DataFolderPlaces FindDataFolderPlaces(const std::string& home) {
  DataFolderPlaces places;
  places.home = home;
  places.zebHome = Variable("ZEB_HOME");
  std::error_code error;
  if (std::filesystem::is_directory(kSystemFolder, error) && access(kSystemFolder, W_OK | X_OK) == 0)
    places.system = kSystemFolder;
  places.xdgDataHome = Variable("XDG_DATA_HOME");
  places.userHome = UserHome();
  return places;
}

Result<std::string> ChooseDataFolder(const DataFolderPlaces& places) {
  std::string folder;
  if (!places.home.empty())
    folder = places.home;
  else if (!places.zebHome.empty())
    folder = places.zebHome;
  else if (!places.system.empty())
    folder = places.system;
  else if (!places.xdgDataHome.empty())
    folder = places.xdgDataHome + "/zeb";
  else if (!places.userHome.empty())
    folder = places.userHome + "/.local/share/zeb";
  else
    return Failure{"there is no data folder: name one with --home"};

  std::error_code error;
  std::string absolute = std::filesystem::absolute(folder, error).lexically_normal().string();
  if (error) return Failure{"cannot use the data folder '" + folder + "': " + error.message()};
  while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
  return absolute;
}

}  // namespace zeb
