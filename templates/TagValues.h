// TagValues: what tags become, against one snapshot and for one output.
//
// Lives for one expansion; the snapshot must not change meanwhile. What every tag would repeat (the simple
// text, an item's additional files) is done once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "templates/TagName.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

class TagValues {
 public:
  // All but the encoding are kept by reference.
  TagValues(const ServiceSnapshot& snapshot, std::string_view simpleText, UploadFileList& uploadFiles,
            ValueEncoding encoding);

  const ServiceSnapshot& Snapshot() const { return snapshot_; }

  // Appends the value of the tag of this name to `to`, and lists the files that go with it.
  void Append(std::string_view name, std::string& to);

 private:
  void AppendItemValue(const clsZEBItemInfo& item, const TagName& tag, std::string& to);
  void AppendPictureName(const clsZEBItemInfo& item, std::int32_t index, std::string& to);
  void FinishValue(std::string& to, std::size_t start) const;
  void AddAdditionalFiles(const clsZEBItemInfo& item);
  const std::string& SimpleTextExpansion();

  const ServiceSnapshot& snapshot_;
  std::string_view simpleText_;
  UploadFileList& uploadFiles_;
  ValueEncoding encoding_;
  std::optional<std::string> simpleTextExpansion_;          // made for the first tag that wants it
  std::vector<const clsZEBItemInfo*> itemsWithFilesAdded_;  // at most one for each slot
};

}  // namespace zeb
