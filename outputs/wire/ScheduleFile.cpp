#include "outputs/wire/ScheduleFile.h"

#include <charconv>
#include <optional>

#include "text/Encodings.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

constexpr std::size_t kMaxMalformedKept = 10;
constexpr int kLastHour = 23;

std::optional<int> Hour(std::string_view text) {
  text = TrimBlanks(text);
  int hour = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), hour);
  if (error != std::errc() || end != text.data() + text.size() || hour < 0 || hour > kLastHour)
    return std::nullopt;
  return hour;
}

std::optional<ScheduleEntry> ParseLine(std::string_view line) {
  const std::size_t first = line.find('|');
  const std::size_t second = first == std::string_view::npos ? first : line.find('|', first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  const std::string_view hours = line.substr(first + 1, second - first - 1);
  const std::string_view rest = line.substr(second + 1);

  const std::size_t hyphen = hours.find('-');
  const std::optional<int> from = Hour(hours.substr(0, hyphen));
  const std::optional<int> to = hyphen == std::string_view::npos ? from : Hour(hours.substr(hyphen + 1));
  if (!from || !to) return std::nullopt;
  return ScheduleEntry{std::string(line.substr(0, first)), *from, *to,
                       std::string(TrimBlanks(rest.substr(0, rest.find('|'))))};
}

}  // namespace

bool ScheduleEntry::Matches(WallTime now) const {
  const std::string today = FormatDateTime(now, "ddd");
  if (days.find(FirstCharacters(today, 2)) == std::string::npos) return false;
  const int hour = static_cast<int>(SecondsOfDay(now)) / 3600;
  return hour >= fromHour && hour <= toHour;
}

ScheduleFile ScheduleFile::Parse(std::string_view bytes) {
  const std::string text = DecodeFile(bytes, DetectFileEncoding(bytes));
  ScheduleFile file;
  int number = 0;
  for (std::string_view rest = text; !rest.empty() && file.entries.size() < kMaxScheduleEntries;) {
    const std::string_view line = TakeLine(rest);
    ++number;
    if (TrimBlanks(line).empty()) continue;
    if (std::optional<ScheduleEntry> entry = ParseLine(line))
      file.entries.push_back(std::move(*entry));
    else if (file.malformedLines.size() < kMaxMalformedKept)
      file.malformedLines.push_back(number);
  }
  return file;
}

}  // namespace zeb
