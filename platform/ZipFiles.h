// ZipFiles: several files as one zip file, made in memory.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"
#include "platform/Time.h"

namespace zeb {

struct ZipEntry {
  std::string name;  // UTF-8, "/" between folders
  std::string bytes;
};

class ZipFiles {
 public:
  virtual ~ZipFiles() = default;
  // The bytes of a zip file with the entries in their order, all of them from `moment`. Takes its time with
  // much: call it on a worker.
  virtual Result<std::string> Make(const std::vector<ZipEntry>& entries, WallTime moment) const = 0;
};

}  // namespace zeb
