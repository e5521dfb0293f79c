// {XX} escapes in item messages and protocol values: one pass, `{` + two of 0-9A-F + `}`; everything else
// stays, so "Song {live}" and a produced "{" arrive unchanged. (The looping converter of prefixes, suffixes
// and append formats is ConvertHexEscapes in diagnostics/hxGeneral.h.)
#pragma once

#include <string>
#include <string_view>

namespace zeb {

// Works on bytes, before decoding: {E9} is the byte E9.
std::string UndoHexEscapes(std::string_view bytes);
// Escapes what would break a quoted value: double quotes, "{", line ends and other control characters.
std::string EscapeValue(std::string_view text);

}  // namespace zeb
