#include "text/Composed.h"

namespace zeb {

std::string Composed(std::string_view pattern, std::initializer_list<std::string_view> parts) {
  std::string text;
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    const bool placeholder =
        pattern[at] == '%' && at + 1 < pattern.size() && pattern[at + 1] >= '1' && pattern[at + 1] <= '9';
    const std::size_t number = placeholder ? static_cast<std::size_t>(pattern[at + 1] - '1') : parts.size();
    if (number >= parts.size()) {
      text += pattern[at];
      continue;
    }
    text += parts.begin()[number];
    ++at;
  }
  return text;
}

}  // namespace zeb
