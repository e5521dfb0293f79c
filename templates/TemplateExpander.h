// TemplateExpander: the general expansion, of a template as a whole or of a page piece by piece. It takes any
// text; for texts that are expanded again and again there is CompiledTemplate.
//
// Lives for one expansion. Linear in text plus result: each pass copies into one buffer.
#pragma once

#include <string>
#include <string_view>

#include "templates/TagValues.h"

namespace zeb {

class TemplateExpander {
 public:
  explicit TemplateExpander(TagValues& values) : values_(values) {}

  // Appends the expansion of `text`, a template of its own, to `to`; cut when that grows beyond
  // kMaxPageBytes.
  void Append(std::string_view text, std::string& to);
  // The same of a page, piece by piece of so many characters.
  void AppendPage(std::string_view page, std::size_t characters, std::string& to);

 private:
  std::string_view ExpandSections(std::string_view text);  // valid until the next call
  std::string_view ShownContent(std::string_view content) const;
  void ExpandTags(std::string_view text, std::string& to);
  void AppendUnclosedTag(std::string_view tag, std::size_t start, std::string& to);

  TagValues& values_;
  std::string sections_;  // the text after the first pass
};

}  // namespace zeb
