// CompletionScript: what a shell needs to complete the options of programs, made from their tables.
#pragma once

#include <string>
#include <vector>

#include "app/CommandTable.h"

namespace zeb {

inline constexpr const char* kCompletionShells = "bash zsh";

// `shell`: one of those. Only the names of services and outputs are asked of the program, and waited for no
// longer than a second or two.
std::string CompletionScript(const std::string& shell, const std::vector<CommandTable>& programs);

}  // namespace zeb
