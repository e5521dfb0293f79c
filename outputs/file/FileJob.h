// FileJob: one pair's way through one update of a file output, and the work on files that it needs.
// Everything here runs on a worker thread and touches nothing but its arguments and the file system.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/ServiceSnapshot.h"
#include "outputs/file/DestinationsInProgress.h"
#include "outputs/file/PageWork.h"
#include "outputs/file/WorkPlace.h"
#include "templates/TemplateStore.h"

namespace zeb {

// The output's own status values, beside OutputStatus.
inline constexpr std::int32_t kStatusSourceFileProblem = 6, kStatusDestinationFileProblem = 7;

struct FileJob {
  std::size_t pair = 0;  // position in the output's list, from 0
  clsFileParameters parameters;
  SnapshotPtr snapshot;             // what the page shows
  std::string source, destination;  // full paths
  PageDigest::When digest = PageDigest::When::kNow;

  std::int32_t status = kStatusOK;
  std::string problem;             // one line; "" when all is well
  bool published = false;          // the page is in place
  Shown::Page page;                // then
  std::vector<std::string> trace;  // for the debug log

  void Fail(std::int32_t withStatus, std::string reason);
};

// What the work is done with.
struct FileTools {
  FileSystem& files;
  DestinationsInProgress& destinations;
  TemplateStore& templates;
  WorkPlace& place;
  const std::string& dataFolder;
  bool preserveTempFiles = false;
  bool trace = false;  // whether the steps go to the debug log
};

// Nothing: failed, and the job says why.
std::shared_ptr<const PageTemplate> LoadFor(FileJob& job, const FileTools& tools);

// Where the page goes. Nothing: refused, and the job says why.
std::unique_ptr<FileTarget> FindPlace(FileJob& job, const FileTools& tools);

// Puts the page in place, then a numbered version of it, when wanted.
void PlacePage(FileJob& job, const FileTools& tools, FileTarget& target, std::string_view page,
               const FileEncoding& encoding);

}  // namespace zeb
