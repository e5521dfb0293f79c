#include "templates/TemplateExpander.h"

#include <algorithm>

#include "templates/FindConstruct.h"
#include "templates/PageChunks.h"
#include "templates/SectionCondition.h"
#include "text/Utf8.h"

namespace zeb {

void TemplateExpander::Append(std::string_view text, std::string& to) {
  if (to.size() <= kMaxPageBytes) ExpandTags(ExpandSections(text), to);
}

void TemplateExpander::AppendPage(std::string_view page, std::size_t characters, std::string& to) {
  for (std::size_t from = 0; from < page.size() && to.size() <= kMaxPageBytes;) {
    const std::size_t end = ChunkEnd(page, from, characters);
    Append(page.substr(from, end - from), to);
    from = end;
  }
}

std::string_view TemplateExpander::ExpandSections(std::string_view text) {
  std::size_t copied = 0;
  sections_.clear();
  while (const auto section = FindSection(text, copied)) {
    sections_.append(text, copied, section->open - copied);
    // What is put in is not searched again: sections inside sections are not evaluated.
    sections_ += ShownContent(text.substr(section->open + 1, section->close - section->open - 1));
    copied = std::min(section->close + 1, text.size());
  }
  if (copied == 0) return text;  // the usual page has no sections: no copy
  sections_.append(text, copied);
  return sections_;
}

std::string_view TemplateExpander::ShownContent(std::string_view content) const {
  const std::optional<SectionCondition> condition = ParseSectionCondition(content);
  if (!condition) return content;
  switch (Evaluate(*condition, values_.Snapshot())) {
    case ShownPart::kNothing:
      return {};
    case ShownPart::kBody:
      return content.substr(condition->body);
    case ShownPart::kAll:
      break;
  }
  return content;
}

void TemplateExpander::ExpandTags(std::string_view text, std::string& to) {
  const std::size_t start = to.size();
  std::size_t copied = 0;
  while (const auto tag = FindTag(text, copied)) {
    to.append(text, copied, tag->open - copied);
    if (tag->close == std::string_view::npos) return AppendUnclosedTag(text.substr(tag->open), start, to);
    values_.Append(text.substr(tag->open + 1, tag->close - tag->open - 1), to);
    if (to.size() > kMaxPageBytes) return;
    copied = tag->close + 1;
  }
  to.append(text, copied);
}

// What a tag that is never closed replaces is counted from the start of the text, not from the tag: as many
// characters as its name has. Whatever lies behind them comes (again) after the value, and the pass ends.
void TemplateExpander::AppendUnclosedTag(std::string_view tag, std::size_t start, std::string& to) {
  std::string all = to.substr(start);
  all += tag;
  const std::string_view name = tag.substr(1);
  values_.Append(name, to);
  to.append(all, SkipCharacters(all, 0, CountCharacters(name)));
}

}  // namespace zeb
