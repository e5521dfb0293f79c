// Characters as a receiver counts them: those of the output's character set.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "text/Encodings.h"

namespace zeb {

// The bytes to send. Control characters go out as they are: they end lines and switch receivers. What the set
// has in their place (EBU Latin has a letter at 0D) goes out as its base letter; a soft hyphen is none of
// them.
std::string EncodeForWire(std::string_view text, CharacterSet set);

// How many characters of the set the text takes.
std::size_t CountInSet(std::string_view text, CharacterSet set);
// The start of the text that takes at most `characters` of them; an accent stays with its letter.
std::string_view CutInSet(std::string_view text, CharacterSet set, std::size_t characters);
// The text with what the set lacks written as EncodeFor would, but still as UTF-8.
std::string KeepToSet(std::string_view text, CharacterSet set);

}  // namespace zeb
