// Retranslate: windows that are open change their language: captions, menus, tabs, headings, as they were
// drawn once. What windows draw again and again anyway follows by itself.
#pragma once

#include "text/LanguageFile.h"

namespace zeb {

// From the language in which the texts were drawn (null: English) to the one that T gives now. A text that is
// none of the program's stays.
void RetranslateWindows(const Language* before);

}  // namespace zeb
