// WinHandle: a handle of Windows, closed with its scope, and what files share. Private to platform/windows.
#pragma once

#include <windows.h>
// After windows.h.
#include <cstdint>
#include <string>
#include <utility>

#include "platform/Result.h"

namespace zeb {

class WinHandle {
 public:
  WinHandle() = default;
  explicit WinHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  WinHandle(WinHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  WinHandle& operator=(WinHandle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~WinHandle() { static_cast<void>(Close()); }
  bool IsOpen() const { return handle_ != nullptr; }
  HANDLE Get() const { return handle_; }
  // A share may tell only now that the disk is full.
  bool Close() { return handle_ == nullptr || CloseHandle(std::exchange(handle_, nullptr)) != 0; }

 private:
  HANDLE handle_ = nullptr;
};

// "cannot write 'C:\x': There is no such folder"
Failure Cannot(const std::string& verb, const std::string& path, const std::string& why);

// The path as Windows takes it: with `\` as separator, and in the form that may be as long as needed where it
// is longer than the usual 260 characters. "" for one with a NUL, which would reach the system cut short.
std::wstring SystemPath(const std::string& path);

// CreateFileW, sharing everything with everybody. What another program holds for a moment (an indexer, a
// virus scanner, a web server) is tried again for up to a quarter of a second.
WinHandle OpenFileSharing(const std::string& path, DWORD access, DWORD disposition, DWORD flags = 0,
                          SECURITY_ATTRIBUTES* rights = nullptr);

// Runs `call`, which gives FALSE and an error, and runs it again as above.
template <class Call>
bool TriedAgain(const Call& call) {
  constexpr int kTries = 25;
  constexpr DWORD kPauseMilliseconds = 10;
  for (int left = kTries;; --left) {
    if (call()) return true;
    const DWORD error = GetLastError();
    const bool passes =
        error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || error == ERROR_USER_MAPPED_FILE;
    if (!passes || left == 0) return false;
    Sleep(kPauseMilliseconds);
  }
}

// 100 ns since 1601 as nanoseconds since 1970, and back.
std::int64_t Nanoseconds(const LARGE_INTEGER& fileTime);
LARGE_INTEGER FileTimeOf(std::int64_t nanoseconds);

bool WriteAll(const WinHandle& file, std::string_view bytes);

}  // namespace zeb
