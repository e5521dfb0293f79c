// TemplateMarks: what an editor of templates draws about a text: where its tags and sections are, what is
// wrong with it, and what is allowed but does something else than most people expect.
//
// Found by the same scanning and the same tables that publish, so that no list of tags is kept twice. Draws
// nothing, refuses nothing. For the desktop program and TemplateLint.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

// kUnknown: a tag or condition that does not do what it seems to. kUnmatched: a bracket without counterpart.
enum class MarkKind { kTag, kSection, kCondition, kUnknown, kUnmatched };

struct TemplateMark {
  MarkKind kind;
  std::size_t start, length;  // in bytes
};

// A sentence about a place. `text` is English with "%1" for `what`, which stands as it is in the template.
struct TemplateRemark {
  std::string_view text;
  std::string what;
  int line = 1;
  std::size_t at = 0;  // in bytes
  bool fault = false;  // else a warning
};

struct TemplateMarks {
  std::vector<TemplateMark> marks;  // each kind in ascending order
  std::vector<TemplateRemark> remarks;
  bool tooLong = false;  // nothing was looked at
};

// Editors ask after each key. What is beyond these bounds goes without marks.
inline constexpr std::size_t kMostMarkedBytes = 64 * 1024;
inline constexpr std::size_t kMostMarks = 2000;
inline constexpr std::size_t kMostRemarks = 8;

TemplateMarks MarkTemplate(std::string_view text);
// The remarks alone, at most so many, of a text of any length, without the template builder's check of its
// brackets (which is stricter than what publishes).
std::vector<TemplateRemark> RemarksOf(std::string_view text, std::size_t most);

}  // namespace zeb
