// TemplateLint: what would surprise whoever wrote a template: what is published otherwise than it looks, or
// not at all, and what breaks the page around it. For `zebctl lint`.
//
// Each finding is true of the expansion that publishes pages; nothing is found by rules of its own.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

struct LintFinding {
  int line = 1, column = 1;  // of the file, from 1; columns are characters
  std::string text;          // one line
};

// More than these are of no use to anybody.
inline constexpr std::size_t kMostFindings = 200;

// `bytes` is the template file as it is, of at most 16 MiB. `name` is what becomes of it ("now.html", or the
// template's own name), which tells the kind of page; `escape` is the word of `EscapeValues`. In the order of
// the file.
std::vector<LintFinding> LintTemplate(std::string_view bytes, std::string_view name, std::string_view escape);

}  // namespace zeb
