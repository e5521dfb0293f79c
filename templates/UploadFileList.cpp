#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"

namespace zeb {

void UploadFileList::Add(std::string_view path) {
  if (lowerCased_.insert(LowerCase(path)).second) paths_.emplace_back(path);
}

}  // namespace zeb
