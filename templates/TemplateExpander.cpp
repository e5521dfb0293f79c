#include "templates/TemplateExpander.h"

#include <algorithm>

#include "templates/SectionCondition.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/Paths.h"
#include "text/PercentEncoding.h"
#include "text/Utf8.h"

namespace zeb {

namespace {
constexpr std::size_t kNone = std::string_view::npos;
}

TemplateExpander::TemplateExpander(const ServiceSnapshot& snapshot, std::string_view simpleText,
                                   UploadFileList& uploadFiles, ValueEncoding values)
    : snapshot_(snapshot), simpleText_(simpleText), uploadFiles_(uploadFiles), values_(values) {}

void TemplateExpander::Append(std::string_view text, std::string& to) {
  ExpandTags(ExpandSections(text), to);
}

std::string_view TemplateExpander::ExpandSections(std::string_view text) {
  std::size_t search = 0, copied = 0;
  sections_.clear();
  for (;;) {
    const std::size_t open = text.find('[', search);
    if (open == kNone || open + 1 == text.size()) break;
    if (text[open + 1] == '[') {  // protected; both characters stay
      search = open + 2;
      continue;
    }
    sections_.append(text, copied, open - copied);
    // A section that is never closed runs to the end.
    const std::size_t close = std::min(text.find(']', open + 1), text.size());
    // What is put in is not searched again: sections inside sections are not evaluated.
    sections_ += ShownPart(text.substr(open + 1, close - open - 1), snapshot_);
    search = copied = std::min(close + 1, text.size());
  }
  if (copied == 0) return text;  // the usual page has no sections: no copy
  sections_.append(text, copied);
  return sections_;
}

void TemplateExpander::ExpandTags(std::string_view text, std::string& to) {
  const std::size_t start = to.size();
  std::size_t search = 0, copied = 0;
  for (;;) {
    const std::size_t open = text.find('<', search);
    if (open == kNone || open + 1 == text.size()) break;
    if (text.compare(open, kTagStart.size(), kTagStart) != 0) {
      // The search goes on two characters further, so that "<<" protects a tag.
      search = open + 2;
      continue;
    }
    to.append(text, copied, open - copied);
    const std::size_t close = text.find('>', open + 1);
    if (close == kNone) return AppendUnclosedTag(text.substr(open), start, to);
    AppendTag(text.substr(open + 1, close - open - 1), to);
    search = copied = close + 1;
  }
  to.append(text, copied);
}

// What a tag that is never closed replaces is counted from the start of the text, not from the tag: as many
// characters as its name has. Whatever lies behind them comes (again) after the value, and the pass ends.
void TemplateExpander::AppendUnclosedTag(std::string_view tag, std::size_t start, std::string& to) {
  std::string all = to.substr(start);
  all += tag;
  const std::string_view name = tag.substr(1);
  AppendTag(name, to);
  to.append(all, SkipCharacters(all, 0, CountCharacters(name)));
}

void TemplateExpander::AppendTag(std::string_view name, std::string& to) {
  const TagName tag = SplitTagName(name);
  if (const clsZEBItemInfo* item = ItemOfSlot(snapshot_, tag.slot)) {
    AppendItemValue(*item, tag, to);
  } else if (tag.slot == "SIMPLETEXT") {
    to += SimpleTextExpansion();
  } else if (tag.slot == "SPECIAL") {
    const std::size_t start = to.size();
    to += snapshot_.GetSpecialElementByName(tag.rest);
    FinishValue(to, start);
  } else {
    to += name;  // without its brackets, for its author to see
  }
}

void TemplateExpander::AppendItemValue(const clsZEBItemInfo& item, const TagName& tag, std::string& to) {
  AddAdditionalFiles(item);
  if (tag.element == "PICTUREFILENAME") return AppendPictureName(item, tag.index, to);
  const std::size_t start = to.size();
  item.AppendElementByName(to, tag.element, true);
  FinishValue(to, start);
}

void TemplateExpander::AppendPictureName(const clsZEBItemInfo& item, std::int32_t index, std::string& to) {
  if (index == 0) index = 1;
  const std::size_t start = to.size();
  if (index < 0 || item.PictureFileName(index).empty()) {
    AppendEscaped(to, snapshot_.NoPictureFileName, values_.escape);
  } else {
    const std::string& picture = item.PictureFileName(index);
    uploadFiles_.Add(picture);
    AppendEscaped(to, FileNamePart(picture), values_.escape);
  }
  if (values_.oneLine) BlankControls(to, start);
}

// Trims and encodes the value that stands from `start` on.
void TemplateExpander::FinishValue(std::string& to, std::size_t start) const {
  if (values_.oneLine && !values_.urlEncode) BlankControls(to, start);
  if (values_.escape != ValueEscape::kNone) {
    const std::string plain(TrimBlanks(std::string_view(to).substr(start)));
    to.resize(start);
    AppendEscaped(to, plain, values_.escape);
  }
  const std::string_view trimmed = TrimBlanks(std::string_view(to).substr(start));
  if (values_.urlEncode) {
    const std::string encoded = UrlEncode(EncodeFor(trimmed, values_.characterSet));
    to.replace(start, kNone, encoded);
  } else if (trimmed.size() != to.size() - start) {
    const std::size_t length = trimmed.size();
    to.erase(start, length == 0 ? 0 : static_cast<std::size_t>(trimmed.data() - to.data()) - start);
    to.resize(start + length);
  }
}

// Every tag of an item adds its files, whatever the element; once they are there, again changes nothing.
void TemplateExpander::AddAdditionalFiles(const clsZEBItemInfo& item) {
  if (std::find(itemsWithFilesAdded_.begin(), itemsWithFilesAdded_.end(), &item) !=
      itemsWithFilesAdded_.end())
    return;
  for (int i = 1; i <= item.NumberAdditionalFiles(); ++i) uploadFiles_.Add(item.AdditionalFile(i));
  itemsWithFilesAdded_.push_back(&item);
}

const std::string& TemplateExpander::SimpleTextExpansion() {
  if (!simpleTextExpansion_) {
    simpleTextExpansion_.emplace();
    // Its own simple text is empty, so that it cannot contain itself.
    TemplateExpander(snapshot_, {}, uploadFiles_, values_).Append(simpleText_, *simpleTextExpansion_);
  }
  return *simpleTextExpansion_;
}

}  // namespace zeb
