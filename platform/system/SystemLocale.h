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
// From now on the system's reasons ("No such file or directory") are in English, as all of the journal is,
// whatever the user's language. To be called once the application object of Qt is made, which takes the
// user's locale over.
void UseEnglishSystemMessages();

}  // namespace zeb
