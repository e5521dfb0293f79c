#include "templates/PageChunks.h"
#include "templates/TemplateExpander.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

std::string ExpandPage(std::string_view page, const ServiceSnapshot& snapshot, std::string_view simpleText,
                       UploadFileList& uploadFiles, ValueEncoding values) {
  std::string expanded;
  expanded.reserve(page.size() + page.size() / 8);
  TemplateExpander expander(snapshot, simpleText, uploadFiles, values);
  for (std::size_t from = 0; from < page.size();) {
    const std::size_t end = ChunkEnd(page, from);
    expander.Append(page.substr(from, end - from), expanded);
    from = end;
  }
  return expanded;
}

}  // namespace zeb
