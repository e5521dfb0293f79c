#include "outputs/file/CopyNotes.h"

#include <cstddef>
#include <set>
#include <utility>

namespace zeb {
namespace {

constexpr std::size_t kMostLines = 10;

}  // namespace

void CopyNotes::Take(const std::map<std::string, std::string>& tried, bool ofAll,
                     const std::function<void(const std::string& line)>& note) {
  std::map<std::string, std::string> failed;
  if (!ofAll) failed = failed_;
  std::set<std::string> told;
  for (const auto& [target, reason] : failed_) told.insert(reason);
  std::size_t fresh = 0;
  for (const auto& [target, reason] : tried) {
    failed.erase(target);
    if (reason.empty()) continue;
    failed[target] = reason;
    if (told.insert(reason).second && ++fresh <= kMostLines) note(reason);
  }
  if (fresh > kMostLines)
    note(std::to_string(fresh - kMostLines) + " more files could not be published, for other reasons");
  failed_ = std::move(failed);
}

}  // namespace zeb
