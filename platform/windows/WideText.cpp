#include "platform/windows/WideText.h"

#include <windows.h>

#include <cstddef>

namespace zeb {

// Without MB_ERR_INVALID_CHARS and WC_ERR_INVALID_CHARS the system puts U+FFFD in itself.
std::wstring Wide(std::string_view utf8) {
  if (utf8.empty()) return {};
  const int bytes = static_cast<int>(utf8.size());
  std::wstring wide(utf8.size(), L'\0');  // never more units than bytes
  const int units = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, wide.data(), bytes);
  wide.resize(static_cast<std::size_t>(units));
  return wide;
}

std::string Narrow(std::wstring_view utf16) {
  if (utf16.empty()) return {};
  const int units = static_cast<int>(utf16.size());
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), units, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, utf16.data(), units, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

}  // namespace zeb
