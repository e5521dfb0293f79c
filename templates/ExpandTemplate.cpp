#include "core/clsZEBService.h"
#include "templates/TemplateExpander.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Numbers.h"

namespace zeb {

std::string ExpandTemplate(std::string_view templateText, const ServiceSnapshot& snapshot,
                           std::string_view simpleText, UploadFileList& uploadFiles, ValueEncoding values) {
  std::string expanded;
  expanded.reserve(templateText.size() + 64);
  TagValues tags(snapshot, simpleText, uploadFiles, values);
  TemplateExpander(tags).Append(templateText, expanded);
  return expanded;
}

std::string ExpandTemplate(std::string_view templateText, const clsZEBService& service,
                           std::string_view simpleText, UploadFileList& uploadFiles, ValueEncoding values) {
  return ExpandTemplate(templateText, *service.TakeSnapshot(), simpleText, uploadFiles, values);
}

std::string JoinArtistNames(const clsZEBItemInfo& item) {
  const ItemFields& fields = item.Fields();
  // A name of blanks counts as present and adds its separator only.
  std::string joined;
  if (!fields.Artist1Name.empty()) joined = TrimBlanks(fields.Artist1Name);
  if (!fields.Artist2Name.empty()) {
    if (!joined.empty()) joined += fields.Artist3Name.empty() ? " and " : ", ";
    joined += TrimBlanks(fields.Artist2Name);
  }
  if (!fields.Artist3Name.empty()) {
    if (joined.empty()) return fields.Artist3Name;  // on its own it keeps its blanks
    joined += " and ";
    joined += TrimBlanks(fields.Artist3Name);
  }
  return joined;
}

}  // namespace zeb
