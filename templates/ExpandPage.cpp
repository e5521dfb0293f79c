#include "templates/PageChunks.h"
#include "templates/TemplateExpander.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

std::optional<std::string> ExpandPage(std::string_view page, const ServiceSnapshot& snapshot,
                                      std::string_view simpleText, UploadFileList& uploadFiles,
                                      ValueEncoding values) {
  std::string expanded;
  expanded.reserve(page.size() + page.size() / 8);
  TagValues tags(snapshot, simpleText, uploadFiles, values);
  TemplateExpander(tags).AppendPage(page, kChunkCharacters, expanded);
  if (expanded.size() > kMaxPageBytes) return std::nullopt;
  return expanded;
}

}  // namespace zeb
