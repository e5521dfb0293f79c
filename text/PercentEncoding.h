// Percent encoding of one value: a byte that may not stand as it is becomes "%" and two hexadecimal digits
// (capitals). Works on the bytes of the character set that the receiver is to see.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

// As forms are sent: blanks as "+", letters and digits kept.
std::string UrlEncode(std::string_view bytes);
std::string UrlDecode(std::string_view text);

// As one part of an address (RFC 3986): letters, digits and "-._~" kept.
std::string PercentEncoded(std::string_view bytes);

}  // namespace zeb
