#include "text/Numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace zeb {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t SkipDigits(std::string_view text, std::size_t at) {
  while (at < text.size() && IsDigit(text[at])) ++at;
  return at;
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(' ');
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

template <class T>
T ParseInteger(std::string_view text, T whenTooLarge) {
  T value = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
  return parsed.ec == std::errc::result_out_of_range ? whenTooLarge : value;
}

// Of an unsigned decimal number outside the range of double: whether it is too large (else too small).
bool IsHuge(std::string_view text) {
  const std::size_t integerEnd = SkipDigits(text, 0);
  std::size_t end = integerEnd;
  if (end < text.size() && text[end] == '.') end = SkipDigits(text, end + 1);
  // The power of ten of the first digit that counts.
  std::int64_t power = static_cast<std::int64_t>(integerEnd);
  for (std::size_t i = 0; i < end && (text[i] == '0' || text[i] == '.'); ++i)
    if (text[i] == '0') --power;
  if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
    std::string_view exponent = text.substr(end + 1);
    const bool negative = !exponent.empty() && exponent[0] == '-';
    if (!exponent.empty() && (exponent[0] == '-' || exponent[0] == '+')) exponent.remove_prefix(1);
    const std::int64_t size = ParseInteger<std::int32_t>(exponent, std::numeric_limits<std::int32_t>::max());
    power += negative ? -size : size;
  }
  return power > 0;
}

template <class T>
void AppendByToChars(std::string& to, T number) {
  std::array<char, 24> buffer{};
  const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  to.append(buffer.data(), written.ptr);
}

}  // namespace

std::int32_t LeadingInteger(std::string_view text) {
  text = WithoutLeadingBlanks(text);
  // from_chars takes a minus sign itself, but no plus sign.
  if (!text.empty() && text[0] == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text[0] == '-') return 0;
  }
  const bool negative = !text.empty() && text[0] == '-';
  return ParseInteger<std::int32_t>(
      text, negative ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max());
}

double LeadingNumber(std::string_view text) {
  text = WithoutLeadingBlanks(text);
  const bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  // from_chars would read "inf" and "nan", too.
  if (text.empty() || (!IsDigit(text[0]) && text[0] != '.')) return 0;
  double value = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
  if (parsed.ec == std::errc::invalid_argument) return 0;
  if (parsed.ec == std::errc::result_out_of_range)
    value = IsHuge(text) ? std::numeric_limits<double>::max() : 0;
  return negative && value != 0 ? -value : value;
}

std::int32_t LeadingDigits(std::string_view text) {
  return ParseInteger<std::int32_t>(text.substr(0, SkipDigits(text, 0)),
                                    std::numeric_limits<std::int32_t>::max());
}

void AppendPlainNumber(std::string& to, std::int64_t number) {
  AppendByToChars(to, number);
}

void AppendPlainNumber(std::string& to, float number) {
  // A zero may be negative; what is not a number has no decimal text.
  if (number == 0 || !std::isfinite(number)) {
    to += '0';
    return;
  }
  // The longest are 39 digits before the point and some 50 behind it.
  std::array<char, 128> buffer{};
  const auto written =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed);
  to.append(buffer.data(), written.ptr);
}

std::string PlainNumber(std::int64_t number) {
  std::string text;
  AppendPlainNumber(text, number);
  return text;
}

std::string PlainNumber(float number) {
  std::string text;
  AppendPlainNumber(text, number);
  return text;
}

std::string PaddedNumber(std::int64_t number, int width) {
  std::string text;
  AppendPaddedNumber(text, number, width);
  return text;
}

void AppendPaddedNumber(std::string& to, std::int64_t number, int width) {
  std::array<char, 24> buffer;
  const char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  const char* const start = buffer.data();
  const char* const digits = start + (number < 0 ? 1 : 0);
  to.append(start, digits);
  if (width > end - digits) to.append(static_cast<std::size_t>(width - (end - digits)), '0');
  to.append(digits, end);
}

std::string_view TrimBlanks(std::string_view text) {
  text = WithoutLeadingBlanks(text);
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace zeb
