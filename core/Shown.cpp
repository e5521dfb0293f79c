#include "core/Shown.h"

#include <algorithm>

#include "text/Lines.h"
#include "text/OneLine.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

constexpr std::size_t kMostTextCharacters = 2000;
constexpr std::size_t kMostFirstCharacters = 300, kMostFirstLines = 5;
constexpr std::size_t kMostBytesOfACharacter = 4;

}  // namespace

std::string ShownText(std::string_view text) {
  std::string shown;
  ForEachLine(text.substr(0, kMostTextCharacters * kMostBytesOfACharacter), [&shown](std::string_view line) {
    const std::string clean = OneLine(line, kMostTextCharacters);
    if (clean.empty()) return;
    if (!shown.empty()) shown += '\n';
    shown += clean;
  });
  return std::string(FirstCharacters(shown, kMostTextCharacters));
}

std::string FirstLines(std::string_view text) {
  std::string shown = ShownText(
      FirstCharacters(text.substr(0, kMostFirstCharacters * kMostBytesOfACharacter), kMostFirstCharacters));
  std::size_t end = 0;
  for (std::size_t lines = 0; lines < kMostFirstLines && end != std::string::npos; ++lines)
    end = shown.find('\n', end + (lines > 0 ? 1 : 0));
  if (end != std::string::npos) shown.resize(end);
  return shown;
}

}  // namespace zeb
