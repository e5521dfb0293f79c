#include "platform/windows/WinFileInfo.h"

#include <chrono>
#include <string>

#include "platform/windows/WideText.h"

namespace zeb {

std::optional<FileInfo> InfoOf(const WinHandle& file) {
  FileInfo info;
  info.seen = std::chrono::steady_clock::now().time_since_epoch();
  if (GetFileType(file.Get()) != FILE_TYPE_DISK) {
    info.isRegular = false;
    return info;
  }
  BY_HANDLE_FILE_INFORMATION identity{};
  FILE_BASIC_INFO times{};
  if (GetFileInformationByHandle(file.Get(), &identity) == 0 ||
      GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &times, sizeof times) == 0)
    return std::nullopt;
  info.size = (std::uint64_t{identity.nFileSizeHigh} << 32) | identity.nFileSizeLow;
  info.modified = Nanoseconds(times.LastWriteTime);
  // Some file systems keep no time of change.
  info.changed = times.ChangeTime.QuadPart != 0 ? Nanoseconds(times.ChangeTime) : info.modified;
  info.device = identity.dwVolumeSerialNumber;
  info.inode = (std::uint64_t{identity.nFileIndexHigh} << 32) | identity.nFileIndexLow;
  info.isFolder = (identity.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  info.isRegular = !info.isFolder;
  return info;
}

std::optional<FileInfo> InfoOfPath(const std::string& path) {
  // Folders are opened with this flag only.
  const WinHandle file =
      OpenFileSharing(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  return file.IsOpen() ? InfoOf(file) : std::nullopt;
}

std::string PathOf(const WinHandle& file) {
  std::wstring path(MAX_PATH, L'\0');
  DWORD length = GetFinalPathNameByHandleW(file.Get(), path.data(), static_cast<DWORD>(path.size()), 0);
  if (length >= path.size()) {
    path.resize(length + 1u);
    length = GetFinalPathNameByHandleW(file.Get(), path.data(), static_cast<DWORD>(path.size()), 0);
  }
  if (length >= path.size()) return {};
  path.resize(length);
  if (path.starts_with(L"\\\\?\\UNC\\")) return "\\\\" + Narrow(path.substr(8));
  return Narrow(path.starts_with(L"\\\\?\\") ? path.substr(4) : path);
}

}  // namespace zeb
