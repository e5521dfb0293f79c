#include "platform/system/DataFolder.h"

#include <windows.h>
// After windows.h.
#include <knownfolders.h>
#include <shlobj.h>

#include <string>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"

namespace zeb {
namespace {

constexpr wchar_t kName[] = L"\\ZEB";

std::string Variable(const wchar_t* name) {
  std::wstring value(32768, L'\0');
  const DWORD length = GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
  return Narrow(std::wstring_view(value).substr(0, length));
}

std::string KnownFolder(const KNOWNFOLDERID& id) {
  wchar_t* path = nullptr;
  std::string folder;
  if (SHGetKnownFolderPath(id, 0, nullptr, &path) == S_OK) folder = Narrow(path);
  CoTaskMemFree(path);
  return folder;
}

// Whether files can be made there; tried, since rights on Windows cannot be told from the folder.
bool IsWritable(const std::string& folder) {
  const std::wstring probe = Wide(folder) + L"\\zeb.try";
  const HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  CloseHandle(file);
  return true;
}

}  // namespace

DataFolderPlaces FindDataFolderPlaces(const std::string& home) {
  DataFolderPlaces places;
  places.home = home;
  places.zebHome = Variable(L"ZEB_HOME");
  // Everybody's, which the installer makes and opens to whoever publishes; else the user's own.
  if (const std::string common = KnownFolder(FOLDERID_ProgramData); !common.empty()) {
    const std::string folder = common + Narrow(kName);
    CreateDirectoryW(Wide(folder).c_str(), nullptr);
    if (IsWritable(folder)) places.system = folder;
  }
  places.userHome = KnownFolder(FOLDERID_LocalAppData);
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
  else if (!places.userHome.empty())
    folder = places.userHome + Narrow(kName);
  else
    return Failure{"there is no data folder: name one with --home"};

  const std::wstring given = Wide(folder);
  std::wstring whole(32768, L'\0');
  const DWORD length =
      GetFullPathNameW(given.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr);
  if (length == 0 || length >= whole.size())
    return Failure{"cannot use the data folder '" + folder + "': " + SystemErrorText(GetLastError())};
  std::string absolute = Narrow(std::wstring_view(whole).substr(0, length));
  while (absolute.size() > 3 && absolute.back() == '\\') absolute.pop_back();  // "C:\" keeps its own
  return absolute;
}

}  // namespace zeb
