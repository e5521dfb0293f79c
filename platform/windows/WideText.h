// Text at the border to Windows: UTF-8 inside the program, UTF-16 at the system.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

// What is no valid UTF-8 or UTF-16 becomes U+FFFD; characters of code 0 are kept. For texts below 1 GiB.
std::wstring Wide(std::string_view utf8);
std::string Narrow(std::wstring_view utf16);

}  // namespace zeb
