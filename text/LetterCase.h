// Letter case without regard to language: simple one-to-one Unicode mapping, so lengths in characters stay.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb {

std::string LowerCase(std::string_view text);
std::string UpperCase(std::string_view text);
// First letter of each word capital, the rest small; words end at white space.
std::string CapitaliseWords(std::string_view text);
bool EqualIgnoringCase(std::string_view a, std::string_view b);
bool StartsWithIgnoringCase(std::string_view text, std::string_view start);
// Byte offset of the first match at or after `from`, or npos. `matchEnd`, when given, is the offset behind it
// (a match may differ in bytes from what was looked for).
std::size_t FindIgnoringCase(std::string_view text, std::string_view what, std::size_t from = 0,
                             std::size_t* matchEnd = nullptr);

// For the program's own words, which are ASCII: no table, no allocation.
constexpr char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}
constexpr char AsciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}
bool EqualIgnoringAsciiCase(std::string_view a, std::string_view b);
std::size_t FindIgnoringAsciiCase(std::string_view text, std::string_view what, std::size_t from = 0);

}  // namespace zeb
