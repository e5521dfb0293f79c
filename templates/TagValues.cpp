#include "templates/TagValues.h"

#include <algorithm>

#include "templates/TemplateExpander.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/Paths.h"
#include "text/PercentEncoding.h"

namespace zeb {

TagValues::TagValues(const ServiceSnapshot& snapshot, std::string_view simpleText,
                     UploadFileList& uploadFiles, ValueEncoding encoding)
    : snapshot_(snapshot), simpleText_(simpleText), uploadFiles_(uploadFiles), encoding_(encoding) {}

void TagValues::Append(std::string_view name, std::string& to) {
  const TagName tag = SplitTagName(name);
  if (const clsZEBItemInfo* item = ItemOfSlot(snapshot_, tag.slot)) {
    AppendItemValue(*item, tag, to);
  } else if (tag.slot == "SIMPLETEXT") {
    to += SimpleTextExpansion();
  } else if (tag.slot == kSpecialSlot) {
    const std::size_t start = to.size();
    to += snapshot_.GetSpecialElementByName(tag.rest);
    FinishValue(to, start);
  } else {
    to += name;  // without its brackets, for its author to see
  }
}

void TagValues::AppendItemValue(const clsZEBItemInfo& item, const TagName& tag, std::string& to) {
  AddAdditionalFiles(item);
  if (tag.element == "PICTUREFILENAME") return AppendPictureName(item, tag.index, to);
  const std::size_t start = to.size();
  item.AppendElementByName(to, tag.element, true);
  FinishValue(to, start);
}

void TagValues::AppendPictureName(const clsZEBItemInfo& item, std::int32_t index, std::string& to) {
  if (index == 0) index = 1;
  const std::size_t start = to.size();
  if (index < 0 || item.PictureFileName(index).empty()) {
    AppendEscaped(to, snapshot_.NoPictureFileName, encoding_.escape);
  } else {
    const std::string& picture = item.PictureFileName(index);
    uploadFiles_.Add(picture);
    AppendEscaped(to, FileNamePart(picture), encoding_.escape);
  }
  if (encoding_.oneLine) BlankControls(to, start);
}

// Trims and encodes the value that stands from `start` on.
void TagValues::FinishValue(std::string& to, std::size_t start) const {
  if (encoding_.oneLine && !encoding_.urlEncode) BlankControls(to, start);
  if (encoding_.escape != ValueEscape::kNone) {
    const std::string plain(TrimBlanks(std::string_view(to).substr(start)));
    to.resize(start);
    AppendEscaped(to, plain, encoding_.escape);
  }
  const std::string_view trimmed = TrimBlanks(std::string_view(to).substr(start));
  if (encoding_.urlEncode) {
    const std::string encoded = UrlEncode(EncodeFor(trimmed, encoding_.characterSet));
    to.replace(start, std::string::npos, encoded);
  } else if (trimmed.size() != to.size() - start) {
    const std::size_t length = trimmed.size();
    to.erase(start, length == 0 ? 0 : static_cast<std::size_t>(trimmed.data() - to.data()) - start);
    to.resize(start + length);
  }
}

// Every tag of an item adds its files, whatever the element; once they are there, again changes nothing.
void TagValues::AddAdditionalFiles(const clsZEBItemInfo& item) {
  if (std::find(itemsWithFilesAdded_.begin(), itemsWithFilesAdded_.end(), &item) !=
      itemsWithFilesAdded_.end())
    return;
  for (int i = 1; i <= item.NumberAdditionalFiles(); ++i) uploadFiles_.Add(item.AdditionalFile(i));
  itemsWithFilesAdded_.push_back(&item);
}

const std::string& TagValues::SimpleTextExpansion() {
  if (!simpleTextExpansion_) {
    simpleTextExpansion_.emplace();
    // Its own simple text is empty, so that it cannot contain itself.
    TagValues values(snapshot_, {}, uploadFiles_, encoding_);
    TemplateExpander(values).Append(simpleText_, *simpleTextExpansion_);
  }
  return *simpleTextExpansion_;
}

}  // namespace zeb
