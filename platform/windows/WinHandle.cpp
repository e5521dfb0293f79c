#include "platform/windows/WinHandle.h"

#include <algorithm>
#include <string_view>

#include "platform/windows/WideText.h"

namespace zeb {
namespace {

constexpr std::int64_t kTicksTo1970 = 116'444'736'000'000'000;
constexpr std::int64_t kNanosecondsInTick = 100;
constexpr std::size_t kUsualPath = 240;  // 260 with room for the name of a work file
constexpr DWORD kMostAtOnce = 1 << 24;

// The whole path in the form that has no limit.
std::wstring LongForm(const std::wstring& path) {
  std::wstring whole(path.size() + MAX_PATH, L'\0');
  DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr);
  if (length >= whole.size()) {
    whole.resize(length);
    length = GetFullPathNameW(path.c_str(), length, whole.data(), nullptr);
  }
  if (length == 0) return path;
  whole.resize(length);
  if (whole.starts_with(L"\\\\")) return L"\\\\?\\UNC\\" + whole.substr(2);
  return L"\\\\?\\" + whole;
}

}  // namespace

Failure Cannot(const std::string& verb, const std::string& path, const std::string& why) {
  return {"cannot " + verb + " '" + path + "': " + why};
}

std::wstring SystemPath(const std::string& path) {
  if (path.find('\0') != std::string::npos) return {};
  std::wstring wide = Wide(path);
  std::replace(wide.begin(), wide.end(), L'/', L'\\');
  if (wide.size() < kUsualPath || wide.starts_with(L"\\\\?\\")) return wide;
  return LongForm(wide);
}

WinHandle OpenFileSharing(const std::string& path, DWORD access, DWORD disposition, DWORD flags,
                          SECURITY_ATTRIBUTES* rights) {
  const std::wstring name = SystemPath(path);
  if (name.empty()) {
    SetLastError(ERROR_INVALID_NAME);
    return {};
  }
  HANDLE made = INVALID_HANDLE_VALUE;
  TriedAgain([&] {
    made = CreateFileW(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, rights,
                       disposition, flags == 0 ? DWORD{FILE_ATTRIBUTE_NORMAL} : flags, nullptr);
    return made != INVALID_HANDLE_VALUE;
  });
  return WinHandle(made);
}

std::int64_t Nanoseconds(const LARGE_INTEGER& fileTime) {
  return (fileTime.QuadPart - kTicksTo1970) * kNanosecondsInTick;
}

LARGE_INTEGER FileTimeOf(std::int64_t nanoseconds) {
  LARGE_INTEGER time{};
  time.QuadPart = nanoseconds / kNanosecondsInTick + kTicksTo1970;
  return time;
}

bool WriteAll(const WinHandle& file, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto piece = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kMostAtOnce));
    DWORD written = 0;
    if (WriteFile(file.Get(), bytes.data(), piece, &written, nullptr) == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

}  // namespace zeb
