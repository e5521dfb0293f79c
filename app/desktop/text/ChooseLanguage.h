// The language of the windows as the settings name it, loaded without holding anything up.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/desktop/Desk.h"

namespace zeb {

// Takes the language that the settings root names ("Language") into use, soon: at the start, and after it has
// been stored anew. What is wrong with its file goes to the journal. When there is none such, the texts stay
// as they are, and `failed` (where given) gets the reason.
void UseStoredLanguage(Desk& desk, std::function<void(const std::string& reason)> failed = {});

// Calls `listed` with the names of the languages that are at hand.
void ListLanguages(Desk& desk, std::function<void(std::vector<std::string> names)> listed);

}  // namespace zeb
