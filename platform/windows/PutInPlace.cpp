#include "platform/windows/PutInPlace.h"

#include <windows.h>

#include <cstddef>
#include <cstring>
#include <vector>

#include "platform/windows/WinHandle.h"

namespace zeb {
namespace {

// Of Windows 10; the cross compiler's headers are older.
constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD kReplaceIfExists = 1, kPosixSemantics = 2;

// Also while others have the old file open, who then go on reading that. Local disks know it.
bool RenameOver(const std::wstring& from, const std::wstring& to) {
  const WinHandle file(CreateFileW(from.c_str(), DELETE | SYNCHRONIZE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                   OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!file.IsOpen()) return false;
  const std::size_t nameBytes = to.size() * sizeof(wchar_t);
  std::vector<unsigned char> bytes(sizeof(FILE_RENAME_INFO) + nameBytes);
  const DWORD flags = kReplaceIfExists | kPosixSemantics;
  const auto length = static_cast<DWORD>(nameBytes);
  std::memcpy(bytes.data(), &flags, sizeof flags);  // where ReplaceIfExists was before
  std::memcpy(bytes.data() + offsetof(FILE_RENAME_INFO, FileNameLength), &length, sizeof length);
  std::memcpy(bytes.data() + offsetof(FILE_RENAME_INFO, FileName), to.data(), nameBytes);
  return SetFileInformationByHandle(file.Get(), kRenameInfoEx, bytes.data(),
                                    static_cast<DWORD>(bytes.size())) != 0;
}

bool MoveOver(const std::wstring& from, const std::wstring& to) {
  return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

// A file that is open may not be replaced, but may be renamed, when who has it open allows that.
bool SetAsideAndMove(const std::wstring& from, const std::wstring& to) {
  const std::wstring aside = from + L".old";
  if (!MoveOver(to, aside)) return false;
  if (!MoveOver(from, to)) {
    const DWORD error = GetLastError();
    MoveOver(aside, to);
    SetLastError(error);
    return false;
  }
  DeleteFileW(aside.c_str());  // at once, or when the last one closes it
  return true;
}

}  // namespace

bool PutInPlace(const std::wstring& from, const std::wstring& to) {
  if (RenameOver(from, to)) return true;
  constexpr int kTries = 10;
  constexpr DWORD kPauseMilliseconds = 10;
  for (int left = kTries;; --left) {
    if (TriedAgain([&] { return MoveOver(from, to); })) return true;
    if (GetLastError() != ERROR_ACCESS_DENIED) return false;
    if (left == 0) break;
    Sleep(kPauseMilliseconds);
  }
  if (SetAsideAndMove(from, to)) return true;
  SetLastError(ERROR_ACCESS_DENIED);
  return false;
}

}  // namespace zeb
