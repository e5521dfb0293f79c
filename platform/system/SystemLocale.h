// SystemLocale: the date and time forms of the system's locale (LC_TIME), in the terms of text/SharedTime.h.
//
// Reads the environment (LC_ALL, LC_TIME, LANG) without changing the process's own locale. Where the system
// lacks the locale that is asked for, the one called "C" stands in, and `problem` says so.
#pragma once

#include <string>
#include <string_view>

#include "text/SharedTime.h"

namespace zeb {

struct SystemLocale {
  LocaleFormats formats;
  std::string problem;  // one line for the operator; "" when all is as asked for
};
SystemLocale ReadSystemLocale();
// The forms of a locale by its name ("de_DE.UTF-8").
LocaleFormats ReadLocale(const std::string& name);

// From now on the system's reasons ("No such file or directory") are in English, as all of the journal is,
// whatever the user's language. To be called once the application object of Qt is made, which takes the
// user's locale over.
void UseEnglishSystemMessages();

// A strftime pattern in the language of FormatDateTime. `twelveHours`: the locale has texts for the halves of
// the day; where it has none, twelve-hour codes are taken as those of twenty-four hours.
std::string PatternFromStrftime(std::string_view format, bool twelveHours);
// The same of the date in a pattern of date and time: what belongs to the time is left out.
std::string DatePatternFromStrftime(std::string_view format, bool twelveHours);

}  // namespace zeb
