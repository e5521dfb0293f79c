// URL coding of one value: blanks as "+", letters and digits kept, every other byte as "%" and two
// hexadecimal digits (capitals). Works on the bytes of the character set that the receiver is to see.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

std::string UrlEncode(std::string_view bytes);
std::string UrlDecode(std::string_view text);

}  // namespace zeb
