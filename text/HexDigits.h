// Hexadecimal digits in escapes.
#pragma once

namespace zeb {

inline constexpr char kHexDigits[] = "0123456789ABCDEF";

// The value of a digit in capitals, or -1.
constexpr int CapitalHexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The value of a digit in either case, or -1.
constexpr int HexDigit(char c) {
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return CapitalHexDigit(c);
}

}  // namespace zeb
