// What a POSIX locale says of dates and times, in the language of FormatDateTime.
#pragma once

#include <string>
#include <string_view>

#include "text/SharedTime.h"

namespace zeb {

// The forms of a locale by its name ("de_DE.UTF-8").
LocaleFormats ReadLocale(const std::string& name);
// `twelveHours`: the locale has texts for the halves of the day; where it has none, twelve-hour codes are
// taken as those of twenty-four hours.
std::string PatternFromStrftime(std::string_view format, bool twelveHours);
// The same of the date in a pattern of date and time: what belongs to the time is left out.
std::string DatePatternFromStrftime(std::string_view format, bool twelveHours);

}  // namespace zeb
