// Windows' patterns of dates and times, in the language of FormatDateTime.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

// "dddd, d. MMMM yyyy", "h:mm:ss tt", with texts in apostrophes.
std::string PatternFromWindows(std::string_view pattern);

}  // namespace zeb
