// TerminalPassword: asks for a password at a terminal, without showing it.
#pragma once

#include <string>

#include "platform/Result.h"

namespace zeb {

// Whether standard input is a terminal, so that somebody can be asked.
bool CanAskForPassword();
// One line, read from the terminal with echo off. Blocks until it is there.
Result<std::string> AskForPassword(const std::string& question);

}  // namespace zeb
