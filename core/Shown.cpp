#include "core/Shown.h"

#include <limits>

#include "text/Lines.h"
#include "text/OneLine.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

constexpr std::size_t kMostTextCharacters = 2000;
constexpr std::size_t kMostFirstCharacters = 300, kMostFirstLines = 5;
constexpr std::size_t kMostBytesOfACharacter = 4;
static_assert(kMostFirstBytes == kMostFirstCharacters * kMostBytesOfACharacter);

// The first lines that are not empty.
std::string Lines(std::string_view text, std::size_t most) {
  std::string shown;
  shown.reserve(text.size());
  for (std::size_t lines = 0; !text.empty() && lines < most;) {
    const std::string clean = OneLine(TakeLine(text), kMostTextCharacters);
    if (clean.empty()) continue;
    if (lines++ > 0) shown += '\n';
    shown += clean;
  }
  return shown;
}

}  // namespace

std::string ShownText(std::string_view text) {
  const std::string shown = Lines(text.substr(0, kMostTextCharacters * kMostBytesOfACharacter),
                                  std::numeric_limits<std::size_t>::max());
  return std::string(FirstCharacters(shown, kMostTextCharacters));
}

std::string FirstLines(std::string_view text) {
  return Lines(FirstCharacters(text.substr(0, kMostFirstBytes), kMostFirstCharacters), kMostFirstLines);
}

}  // namespace zeb
