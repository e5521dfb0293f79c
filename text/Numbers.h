// Numbers in text.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zeb {

// The number at the start of the text, blanks before it skipped; 0 when there is none. Out of range: the
// nearest the type holds.
std::int32_t LeadingInteger(std::string_view text);
double LeadingNumber(std::string_view text);  // with sign, decimal point and exponent; never NaN or infinite
// The leading decimal digits only, no sign or blanks; 0 when there are none.
std::int32_t LeadingDigits(std::string_view text);

// Digits and nothing else, with a sign when the type has one.
template <class Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// Plain decimal text: no exponent, the shortest that reads back as the same number ("0", "-3.5").
std::string PlainNumber(std::int64_t number);
std::string PlainNumber(float number);
void AppendPlainNumber(std::string& to, std::int64_t number);
void AppendPlainNumber(std::string& to, float number);
// With leading zeros to at least `width` digits.
std::string PaddedNumber(std::int64_t number, int width);
void AppendPaddedNumber(std::string& to, std::int64_t number, int width);

// Blanks (U+0020) only, at both ends.
std::string_view TrimBlanks(std::string_view text);

}  // namespace zeb
