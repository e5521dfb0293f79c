// Windows' own words for an error code.
#pragma once

#include <string>

namespace zeb {

// For a code of GetLastError or of a registry or socket call: one line in English, whatever the machine's
// language, without full stop and line end ("Access is denied"). "error 5" when there is no text for it.
std::string SystemErrorText(unsigned long code);

}  // namespace zeb
