// LibzipFiles: zip files by libzip.
#pragma once

#include "platform/ZipFiles.h"

namespace zeb {

class LibzipFiles : public ZipFiles {
 public:
  Result<std::string> Make(const std::vector<ZipEntry>& entries, WallTime moment) const override;
};

}  // namespace zeb
