#include "text/SharedTime.h"

#include <algorithm>
#include <cmath>

#include "text/Numbers.h"

namespace zeb {
namespace {

using std::chrono::days;
using std::chrono::local_days;
using std::chrono::seconds;

constexpr local_days kDayZero{std::chrono::year(1899) / 12 / 30};
// The years 100 to 9999, which four digits and the calendar hold.
constexpr std::int32_t kFirstDay = -657434;
constexpr std::int32_t kLastDay = 2958465;
constexpr std::int64_t kSecondsPerDay = 86400;

LocaleFormats& Installed() {
  static LocaleFormats formats;
  return formats;
}

// Whole seconds, fractions cut. What is no time of day (negative, not a number) counts as 0.
std::int64_t WholeSeconds(float secondsOfDay) {
  if (!(secondsOfDay > 0)) return 0;
  return static_cast<std::int64_t>(std::min(secondsOfDay, 1e9F));
}

void AppendTwoDigits(std::string& to, std::int64_t number) {
  if (number < 10) to += '0';
  AppendPlainNumber(to, number);
}

void AppendTime(std::string& to, std::int64_t wholeSeconds) {
  AppendTwoDigits(to, wholeSeconds / 3600);
  to += ':';
  AppendTwoDigits(to, wholeSeconds / 60 % 60);
  to += ':';
  AppendTwoDigits(to, wholeSeconds % 60);
}

WallTime MomentOf(std::int64_t dayNumber, std::int64_t wholeSeconds) {
  dayNumber += wholeSeconds / kSecondsPerDay;
  dayNumber = std::clamp<std::int64_t>(dayNumber, kFirstDay, kLastDay);
  return kDayZero + days(dayNumber) + seconds(wholeSeconds % kSecondsPerDay);
}

// The number that all of `text` is, or -1.
std::int64_t AllDigits(std::string_view text) {
  if (text.empty() || text.size() > 9) return -1;
  if (text.find_first_not_of("0123456789") != std::string_view::npos) return -1;
  return LeadingDigits(text);
}

}  // namespace

const LocaleFormats& CurrentLocale() {
  return Installed();
}

void InstallLocale(LocaleFormats formats) {
  Installed() = std::move(formats);
}

std::string GeneralDate(WallTime moment) {
  return FormatDateTime(moment, CurrentLocale().shortDate) + ' ' +
         FormatDateTime(moment, CurrentLocale().longTime);
}

std::string Rfc3339(WallTime moment, std::chrono::seconds utcOffset) {
  std::string text = XmlDateTime(moment);
  const auto thousandths = std::chrono::floor<std::chrono::milliseconds>(moment) -
                           std::chrono::floor<std::chrono::seconds>(moment);
  text += '.' + PaddedNumber(static_cast<int>(thousandths.count()), 3);
  if (utcOffset == std::chrono::seconds::zero()) return text + "Z";
  text += utcOffset < std::chrono::seconds::zero() ? '-' : '+';
  const auto minutes = std::chrono::abs(std::chrono::duration_cast<std::chrono::minutes>(utcOffset)).count();
  AppendTwoDigits(text, minutes / 60);
  text += ':';
  AppendTwoDigits(text, minutes % 60);
  return text;
}

std::string XmlDateTime(WallTime moment) {
  const auto day = std::chrono::floor<days>(moment);
  const std::chrono::year_month_day date(day);
  std::string text = PaddedNumber(static_cast<int>(date.year()), 4);
  text += '-';
  AppendTwoDigits(text, static_cast<unsigned>(date.month()));
  text += '-';
  AppendTwoDigits(text, static_cast<unsigned>(date.day()));
  text += 'T';
  AppendTime(text, std::chrono::floor<seconds>(moment - day).count());
  return text;
}

std::string XmlDateTime(std::int32_t dayNumber, float secondsOfDay) {
  return dayNumber == 0 ? std::string() : XmlDateTime(MomentOf(dayNumber, WholeSeconds(secondsOfDay)));
}

std::string ShortDate(std::int32_t dayNumber) {
  return dayNumber == 0 ? std::string() : FormatDateTime(MomentOf(dayNumber, 0), CurrentLocale().shortDate);
}

std::string TimeText(float secondsOfDay) {
  std::string text;
  AppendTime(text, WholeSeconds(secondsOfDay));
  return text;
}

double SecondsBetween(std::int32_t fromDay, float fromSeconds, std::int32_t toDay, float toSeconds) {
  const double wholeDays = static_cast<double>(toDay) - static_cast<double>(fromDay);
  return wholeDays * static_cast<double>(kSecondsPerDay) +
         (static_cast<double>(toSeconds) - static_cast<double>(fromSeconds));
}

float SecondsFromTimeText(std::string_view text) {
  text = TrimBlanks(text);
  double fraction = 0;
  if (const std::size_t point = text.find('.'); point != std::string_view::npos) {
    if (AllDigits(text.substr(point + 1)) < 0) return 0;
    fraction = LeadingNumber(text.substr(point));
    text = text.substr(0, point);
  }
  std::int64_t total = 0;
  for (int part = 0; part < 3; ++part) {
    const std::size_t colon = text.find(':');
    const std::int64_t number = AllDigits(text.substr(0, colon));
    // The first part may be any number of its unit; the ones behind it are sixtieths.
    if (number < 0 || (part > 0 && number > 59)) return 0;
    total = total * 60 + number;
    if (colon == std::string_view::npos) return static_cast<float>(static_cast<double>(total) + fraction);
    text = text.substr(colon + 1);
  }
  return 0;
}

std::int32_t DayNumber(WallTime moment) {
  return static_cast<std::int32_t>((std::chrono::floor<days>(moment) - kDayZero).count());
}

float SecondsOfDay(WallTime moment) {
  const auto sinceMidnight = moment - std::chrono::floor<days>(moment);
  const auto whole = static_cast<float>(std::chrono::floor<seconds>(sinceMidnight).count());
  const auto exact =
      static_cast<float>(static_cast<double>(std::chrono::milliseconds(sinceMidnight).count()) / 1000);
  // Late in the day a float has steps of 8 ms: the last moment of a second must not become the next second.
  return exact >= whole + 1 ? std::nextafter(whole + 1, 0.0F) : exact;
}

}  // namespace zeb
