// Where the two passes of an expansion find what they replace: first sections, then tags.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "templates/TagName.h"

namespace zeb {

struct FoundConstruct {
  std::size_t open;   // of its first bracket
  std::size_t close;  // of its last one
};

// The first section at or after `from`. One that is never closed runs to the end: there is its `close`.
inline std::optional<FoundConstruct> FindSection(std::string_view text, std::size_t from) {
  for (;;) {
    const std::size_t open = text.find('[', from);
    if (open == std::string_view::npos || open + 1 == text.size()) return std::nullopt;
    if (text[open + 1] != '[') return FoundConstruct{open, std::min(text.find(']', open + 1), text.size())};
    from = open + 2;  // protected; both characters stay
  }
}

// The first tag at or after `from`; its `close` is npos when it is never closed.
inline std::optional<FoundConstruct> FindTag(std::string_view text, std::size_t from) {
  for (;;) {
    const std::size_t open = text.find('<', from);
    if (open == std::string_view::npos || open + 1 == text.size()) return std::nullopt;
    if (text.compare(open, kTagStart.size(), kTagStart) == 0)
      return FoundConstruct{open, text.find('>', open + 1)};
    from = open + 2;  // two characters further, so that "<<" protects a tag
  }
}

}  // namespace zeb
