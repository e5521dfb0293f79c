#include "platform/SerialLineSettings.h"

#include <array>
#include <charconv>
#include <string>

namespace zeb {

namespace {

constexpr std::int32_t kHighestBaud = 4'000'000;

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

// -1: no whole number.
std::int32_t WholeNumber(std::string_view text) {
  std::int32_t number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : -1;
}

Failure Bad(std::string_view text, std::string_view what) {
  return Failure{"bad line settings '" + std::string(text) + "': " + std::string(what)};
}

}  // namespace

Result<SerialLineSettings> ParseSerialLineSettings(std::string_view text) {
  std::array<std::string_view, 4> parts;
  std::size_t count = 0;
  for (std::string_view rest = text;; ++count) {
    if (count == parts.size()) return Bad(text, "more than four parts");
    const std::size_t comma = rest.find(',');
    parts[count] = Trimmed(rest.substr(0, comma));
    if (comma == std::string_view::npos) break;
    rest.remove_prefix(comma + 1);
  }
  if (count != 3) return Bad(text, "baud, parity, data bits and stop bits are needed, such as '9600,n,8,1'");

  SerialLineSettings settings;
  settings.baud = WholeNumber(parts[0]);
  if (settings.baud < 1 || settings.baud > kHighestBaud) return Bad(text, "the baud rate is no rate");
  const char parity = parts[1].size() == 1 ? static_cast<char>(parts[1][0] | 0x20) : '?';
  if (std::string_view("neoms").find(parity) == std::string_view::npos)
    return Bad(text, "the parity must be n, e, o, m or s");
  settings.parity = parity;
  settings.dataBits = WholeNumber(parts[2]);
  if (settings.dataBits < 5 || settings.dataBits > 8) return Bad(text, "the data bits must be 5 to 8");
  if (parts[3] == "1")
    settings.stopBitsTimesTwo = 2;
  else if (parts[3] == "1.5")
    settings.stopBitsTimesTwo = 3;
  else if (parts[3] == "2")
    settings.stopBitsTimesTwo = 4;
  else
    return Bad(text, "the stop bits must be 1, 1.5 or 2");
  return settings;
}

}  // namespace zeb
