// FileJob: one pair's way through one update of a file output, and the work on files that it needs.
// Everything here may run on a worker thread and touches nothing but its arguments and the file system.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "outputs/file/PageWork.h"

namespace zeb {

// The output's own status values, beside OutputStatus.
inline constexpr std::int32_t kStatusSourceFileProblem = 6, kStatusDestinationFileProblem = 7;

struct FileJob {
  std::size_t pair = 0;  // position in the output's list, from 0
  clsFileParameters parameters;
  std::string source, destination;  // full paths

  LoadedTemplate loaded;
  std::string page;      // expanded
  bool ready = false;    // `page` is to be written
  bool skipped = false;  // the items changed meanwhile, and the rules no longer ask for this pair

  std::int32_t status = kStatusOK;
  std::string problem;    // one line; "" when all is well
  bool leftOver = false;  // the work file could not be renamed

  void Fail(std::int32_t withStatus, std::string reason);
};

void LoadJob(FileSystem& files, FileJob& job);

// The newest number of each destination with numbered versions, as far as known.
using VersionNumbers = std::map<std::string, std::int64_t>;

// Puts the page in place: a temporary file, its copy beside the destination, and a rename, so that a reader
// always finds the old page or the new one. Then the same for a numbered version, when wanted.
void PlacePage(FileSystem& files, FileJob& job, bool preserveTempFiles, VersionNumbers& versions);

// The name under which a file is made beside its final one.
std::string WorkName(const std::string& path);

// A file that travels with a page.
struct AdditionalCopy {
  std::string source, target;
};
// Copies through a work file and a rename. With `always` off, an equal file (same size and time) is left
// alone. The reason, when it fails.
std::string CopyAdditional(FileSystem& files, const AdditionalCopy& copy, bool always);

}  // namespace zeb
