// Text from outside, made fit for a journal line or a protocol line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb {

// Each run of control characters becomes one blank; at most `maxCharacters` stay. `text` is UTF-8.
std::string OneLine(std::string_view text, std::size_t maxCharacters = 200);

}  // namespace zeb
