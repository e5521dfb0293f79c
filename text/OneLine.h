// Text from outside, made fit for a journal line or a protocol line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb {

// Control characters here are those of ASCII and of Latin-1 (80 to 9F), and Unicode's two line ends. `text`
// is UTF-8.

// Each run of control characters becomes one blank; at most `maxCharacters` stay.
std::string OneLine(std::string_view text, std::size_t maxCharacters = 200);
// Each control character from `start` on becomes a blank.
void BlankControls(std::string& text, std::size_t start = 0);
std::string WithoutControls(std::string_view text);

}  // namespace zeb
