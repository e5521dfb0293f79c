// The shared time component: dates and times as text, and their differences.
//
// Dates without a time are day numbers, counted from 30 December 1899 (day 0, which also means "never set").
// Times of day are seconds after midnight. Forms that depend on the country come from LocaleFormats, which
// the program reads from the system once at start (platform/system/SystemLocale.h) and installs here; tests
// use the built-in ones.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Time.h"

namespace zeb {

// Patterns are in the language of FormatDateTime.
struct LocaleFormats {
  std::string shortDate = "dd/mm/yyyy";
  std::string longDate = "dd mmmm yyyy";
  std::string longTime = "hh:nn:ss";
  std::array<std::string, 7> dayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                         "Thursday", "Friday", "Saturday"};
  std::array<std::string, 7> shortDayNames = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  std::array<std::string, 12> monthNames = {"January",   "February", "March",    "April",
                                            "May",       "June",     "July",     "August",
                                            "September", "October",  "November", "December"};
  std::array<std::string, 12> shortMonthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  std::string am = "AM";
  std::string pm = "PM";
};

const LocaleFormats& CurrentLocale();
void InstallLocale(LocaleFormats formats);

// Date codes without regard to case: d dd ddd dddd ddddd (short date) dddddd (long date) w ww m mm mmm mmmm q
// y yy yyyy h hh n nn s ss, AM/PM A/P AMPM (twelve-hour clock), ttttt (long time), c (short date and long
// time). "m" or "mm" directly after an hour code means minutes. "text" in double quotes and \x stand for
// themselves, other characters are copied. "yyy" is "yyyy". "AMPM" is the locale's text, the other half-day
// marks follow the case of the pattern. Sunday is the first day of the week; week 1 holds 1 January. An
// empty pattern gives "".
std::string FormatDateTime(WallTime moment, std::string_view pattern);
// Short date, a blank, long time.
std::string GeneralDate(WallTime moment);

// "YYYY-MM-DDThh:mm:ss". A day number of 0 gives "".
std::string XmlDateTime(WallTime moment);
std::string XmlDateTime(std::int32_t dayNumber, float secondsOfDay);
// RFC 3339, to the millisecond: "YYYY-MM-DDThh:mm:ss.mmm+01:00", "…Z" at UTC.
std::string Rfc3339(WallTime moment, std::chrono::seconds utcOffset);
std::string ShortDate(std::int32_t dayNumber);  // "" for day 0
std::string TimeText(float secondsOfDay);       // style 2: "hh:mm:ss", fractions cut; not below 0
// Seconds from the first moment to the second.
double SecondsBetween(std::int32_t fromDay, float fromSeconds, std::int32_t toDay, float toSeconds);
// "hh:mm:ss" or "mm:ss" (or seconds alone), the last with a decimal fraction or without, to seconds;
// malformed: 0.
float SecondsFromTimeText(std::string_view text);

std::int32_t DayNumber(WallTime moment);
float SecondsOfDay(WallTime moment);

}  // namespace zeb
