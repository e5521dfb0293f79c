// The one scanning primitive of the template language.
#pragma once

#include <cstddef>
#include <string_view>

namespace zeb {

struct Extract {
  std::string_view text;  // up to the delimiter, without it; to the end when there is none
  std::size_t end;        // the delimiter's offset, npos when there is none

  // Where the language goes on reading. Without a delimiter that is the start of the text again (npos + 1 is
  // 0); templates in the field depend on it.
  std::size_t Next() const { return end + 1; }
};

// `from` may lie behind the end: nothing is found there.
inline Extract ExtractToDelimiter(std::string_view text, std::size_t from, char delimiter) {
  const std::size_t end = text.find(delimiter, from);
  if (from > text.size()) from = text.size();
  return {text.substr(from, end == std::string_view::npos ? end : end - from), end};
}

}  // namespace zeb
