#include "platform/system/SettingsFile.h"

#include <array>
#include <cstdio>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "platform/windows/WinFileInfo.h"
#include "platform/windows/WinHandle.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr char kAsideMark[] = ".damaged-";
// What SQLite keeps beside its file.
constexpr std::array<const char*, 3> kCompanions = {"-journal", "-wal", "-shm"};

std::string LastError() {
  return SystemErrorText(GetLastError());
}

std::string AsideName(const std::string& path) {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  std::array<char, 32> stamp{};
  std::snprintf(stamp.data(), stamp.size(), "%04d%02d%02d-%02d%02d%02d", now.wYear, now.wMonth, now.wDay,
                now.wHour, now.wMinute, now.wSecond);
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

// SQLite hands on the codes of GetLastError.
std::string SystemReason(int errorNumber) {
  return SystemErrorText(static_cast<unsigned long>(errorNumber));
}

bool FileExists(const std::string& path) {
  return GetFileAttributesW(SystemPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::optional<FoundFile> FindFile(const std::string& path) {
  const auto info = InfoOfPath(path);
  if (!info) return std::nullopt;
  return FoundFile{info->device, info->inode, static_cast<std::int64_t>(info->size), info->isRegular};
}

bool RemoveFile(const std::string& path) {
  return DeleteFileW(SystemPath(path).c_str()) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND;
}

Outcome CreateSettingsFile(const std::string& path, const std::string& what) {
  const WinHandle file = OpenFileSharing(path, GENERIC_WRITE, CREATE_NEW);
  if (file.IsOpen()) return {};
  return Failure{"cannot create " + what + " '" + path + "': " + LastError()};
}

// The data folder's rights are handed down to it.
void RestrictSettingsFile(const std::string&) {}

Result<std::string> SetSettingsFileAside(const std::string& path, const std::string& what) {
  const std::string aside = AsideName(path);
  const auto move = [](const std::string& from, const std::string& to) {
    return MoveFileExW(SystemPath(from).c_str(), SystemPath(to).c_str(), 0) != 0;
  };
  // The journals first: left alone, they would be played back into the file that comes next.
  for (const char* ending : kCompanions)
    if (!move(path + ending, aside + ending) && GetLastError() != ERROR_FILE_NOT_FOUND)
      return Failure{"cannot set aside the journal of damaged " + what + " '" + path + "': " + LastError()};
  if (!move(path, aside))
    return Failure{"cannot set aside damaged " + what + " '" + path + "': " + LastError()};
  return aside;
}

std::string FindSettingsFileSetAside(const std::string& path) {
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW((SystemPath(path) + Wide(kAsideMark) + L"*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return {};
  std::string last;
  do {
    const std::string name = Narrow(found.cFileName);
    if (!IsCompanion(name) && name > last) last = name;
  } while (FindNextFileW(search, &found) != 0);
  FindClose(search);
  return last.empty() ? "" : std::string(FolderPart(path)) + last;
}

}  // namespace zeb
