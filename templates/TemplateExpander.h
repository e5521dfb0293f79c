// TemplateExpander: one expansion against one snapshot, of a template as a whole or of a page piece by piece.
//
// Lives for one call of ExpandTemplate or ExpandPage; the service must not change meanwhile. Linear in text
// plus result: each pass copies into one buffer, and what every tag would repeat (the simple text, an item's
// additional files) is done once.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "templates/TagName.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

class TemplateExpander {
 public:
  // All are kept by reference.
  TemplateExpander(const ServiceSnapshot& snapshot, std::string_view simpleText, UploadFileList& uploadFiles,
                   ValueEncoding values);

  // Appends the expansion of `text`, a template of its own, to `to`.
  void Append(std::string_view text, std::string& to);

 private:
  std::string_view ExpandSections(std::string_view text);  // valid until the next call
  void ExpandTags(std::string_view text, std::string& to);
  void AppendTag(std::string_view name, std::string& to);
  void AppendUnclosedTag(std::string_view tag, std::size_t start, std::string& to);
  void AppendItemValue(const clsZEBItemInfo& item, const TagName& tag, std::string& to);
  void AppendPictureName(const clsZEBItemInfo& item, std::int32_t index, std::string& to);
  void FinishValue(std::string& to, std::size_t start) const;
  void AddAdditionalFiles(const clsZEBItemInfo& item);
  const std::string& SimpleTextExpansion();

  const ServiceSnapshot& snapshot_;
  std::string_view simpleText_;
  UploadFileList& uploadFiles_;
  ValueEncoding values_;
  std::string sections_;                                    // the text after the first pass
  std::optional<std::string> simpleTextExpansion_;          // made for the first tag that wants it
  std::vector<const clsZEBItemInfo*> itemsWithFilesAdded_;  // at most one for each slot
};

}  // namespace zeb
