#include "outputs/file/LeftOvers.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <utility>
#include <vector>

#include "outputs/file/PageWork.h"
#include "platform/EventLoop.h"
#include "platform/FileSystem.h"
#include "platform/Operator.h"
#include "text/Paths.h"

namespace zeb {
namespace {

// When a worker hangs at one page, the next goes on behind it; but not for ever.
constexpr int kMostWorkers = 3;
constexpr Duration kWorkerLimit = std::chrono::seconds(10);

// Done by one worker, or by several at a time once one has taken too long; so it is theirs together.
struct Removal {
  Removal(FileSystem& givenFiles, std::string dataFolder, std::vector<std::string> givenPages)
      : files(givenFiles), rules{true, std::move(dataFolder), ""}, pages(std::move(givenPages)) {}

  FileSystem& files;
  const LinkRules rules;  // as for the pages
  const std::vector<std::string> pages;
  std::atomic<bool> tempDone = false;
  std::atomic<std::size_t> next = 0, removed = 0;

  void Do() {
    if (!tempDone.exchange(true)) removed += files.DeleteLeftTempFiles(kTempPrefix);
    for (std::size_t i = 0; (i = next++) < pages.size();) {
      const auto target = files.FindTarget(pages[i], rules);
      if (target && target.Value()->RemoveLeftOver()) ++removed;
    }
  }
};

}  // namespace

LeftOvers::LeftOvers(Environment& environment) : environment_(environment) {}

void LeftOvers::AddPages(const PairOutput& output) {
  for (int i = 1; i <= output.UpdateFileCount(); ++i) {
    const clsFileParameters& pair = output.UpdateFile(i);
    if (pair.DestinationFileName().empty()) continue;
    const std::string page = JoinPath(environment_.dataFolder, pair.DestinationFileName());
    wanted_.insert(page);
    wanted_.insert(JoinPath(environment_.dataFolder, pair.SourceFileName()));
    pages_.insert(page);
  }
}

void LeftOvers::Remove() const {
  std::vector<std::string> pages;
  for (const std::string& page : pages_)
    if (!wanted_.contains(WorkName(page))) pages.push_back(page);
  const auto removal =
      std::make_shared<Removal>(environment_.files, environment_.dataFolder, std::move(pages));
  environment_.loop.Start("remove left-over files", [&environment = environment_, removal] {
    int workers = 1;
    while (!environment.loop.RunBlocking([removal] { removal->Do(); }, kWorkerLimit) &&
           workers < kMostWorkers)
      ++workers;
    const std::size_t count = removal->removed;
    if (count == 0) return;
    environment.person.Note("Removed " + std::to_string(count) + (count == 1 ? " file" : " files") +
                            " that an earlier run had left unfinished");
  });
}

}  // namespace zeb
