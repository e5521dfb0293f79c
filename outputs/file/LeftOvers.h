// LeftOvers: what a run of this station that was killed in the middle of an update has left behind: work
// files beside the pages, and temporary pages. Removed at the next start, by a worker, while everything else
// goes on.
//
// Only what is surely left is removed (FileTarget::RemoveLeftOver says what that is). What stays, on a share
// that is away just then, is replaced by the next update of its page.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "outputs/file/PairOutput.h"
#include "platform/Environment.h"

namespace zeb {

class LeftOvers {
 public:
  explicit LeftOvers(Environment& environment);
  // The pages of one file output; of all services, before Remove.
  void AddPages(const PairOutput& output);
  // Begins to remove, and returns. One journal line in the end, when there was anything.
  void Remove() const;

 private:
  Environment& environment_;
  std::set<std::string> pages_;
  std::set<std::string> wanted_;  // templates and pages, which are no work files whatever their names
};

}  // namespace zeb
