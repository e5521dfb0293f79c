#include "platform/posix/SettingsFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "text/Paths.h"

namespace zeb {
namespace {

constexpr char kAsideMark[] = ".damaged-";
// What SQLite keeps beside its file.
constexpr std::array<const char*, 3> kCompanions = {"-journal", "-wal", "-shm"};

Failure Failed(const std::string& what, const std::string& path, int errorNumber) {
  return Failure{what + " '" + path + "': " + SystemReason(errorNumber)};
}

std::string Folder(const std::string& path) {
  std::string folder(FolderPart(path));
  return folder.empty() ? "." : folder;
}

std::string AsideName(const std::string& path) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::array<char, 32> stamp{};
  std::strftime(stamp.data(), stamp.size(), "%Y%m%d-%H%M%S", &local);
  const std::string name = path + kAsideMark + stamp.data();
  std::string unused = name;
  for (int i = 2; FileExists(unused); ++i) unused = name + "-" + std::to_string(i);
  return unused;
}

bool IsCompanion(const std::string& name) {
  for (const char* ending : kCompanions)
    if (name.ends_with(ending)) return true;
  return false;
}

}  // namespace

std::string SystemReason(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

bool FileExists(const std::string& path) {
  struct stat info {};
  return ::lstat(path.c_str(), &info) == 0;
}

std::optional<FoundFile> FindFile(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return std::nullopt;
  return FoundFile{info.st_dev, info.st_ino, info.st_size, S_ISREG(info.st_mode)};
}

bool RemoveFile(const std::string& path) {
  return ::unlink(path.c_str()) == 0 || errno == ENOENT;
}

Outcome CheckSettingsFile(const std::string& path) {
  const std::string folder = Folder(path);
  struct stat info {};
  if (::stat(folder.c_str(), &info) != 0)
    return Failed("cannot use the folder of the settings file", folder, errno);
  if (::access(folder.c_str(), W_OK | X_OK) != 0)
    return Failed("cannot write in the folder of the settings file", folder, errno);
  if (!FileExists(path)) return {};
  if (::stat(path.c_str(), &info) != 0) return Failed("cannot open settings file", path, errno);
  if (!S_ISREG(info.st_mode)) return Failure{"settings file '" + path + "' is not a regular file"};
  if (::access(path.c_str(), R_OK | W_OK) != 0) return Failed("cannot open settings file", path, errno);
  return {};
}

Outcome CreateSettingsFile(const std::string& path, const std::string& what) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) return Failed("cannot create " + what, path, errno);
  struct stat folder {};
  Outcome outcome;
  if (::geteuid() == 0 && ::stat(Folder(path).c_str(), &folder) == 0 &&
      ::fchown(file, folder.st_uid, folder.st_gid) != 0)
    outcome = Failed("cannot give " + what + " to the owner of its folder:", path, errno);
  ::close(file);
  return outcome;
}

void RestrictSettingsFile(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || (info.st_mode & 077) == 0) return;
  // Only its owner can do it; for anyone else the file is usable as it is.
  (void)(::chmod(path.c_str(), 0600) == 0);
}

Outcome PlaceSettingsFile(const std::string& from, const std::string& path) {
  // A journal without its file belongs to a file that somebody took away, and must not be played back into
  // the new one.
  if (!FileExists(path))
    for (const char* ending : kCompanions) ::unlink((path + ending).c_str());
  const int linked = ::link(from.c_str(), path.c_str());
  const int linkError = errno;
  if (linked == 0 || linkError == EEXIST) {
    ::unlink(from.c_str());
    return {};
  }
  // Some file systems have no links.
  if (::rename(from.c_str(), path.c_str()) == 0) return {};
  return Failed("cannot create settings file", path, linkError);
}

Result<std::string> SetSettingsFileAside(const std::string& path, const std::string& what) {
  const std::string aside = AsideName(path);
  // The journals first: left alone, they would be played back into the file that comes next.
  for (const char* ending : kCompanions)
    if (::rename((path + ending).c_str(), (aside + ending).c_str()) != 0 && errno != ENOENT)
      return Failed("cannot set aside the journal of damaged " + what, path, errno);
  if (::rename(path.c_str(), aside.c_str()) != 0)
    return Failed("cannot set aside damaged " + what, path, errno);
  return aside;
}

std::string FindSettingsFileSetAside(const std::string& path) {
  const std::string start = std::string(FileNamePart(path)) + kAsideMark;
  std::string last;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(Folder(path), error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.starts_with(start) && !IsCompanion(name) && name > last) last = name;
  }
  return last.empty() ? "" : std::string(FolderPart(path)) + last;
}

}  // namespace zeb
