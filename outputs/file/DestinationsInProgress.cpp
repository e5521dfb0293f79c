#include "outputs/file/DestinationsInProgress.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "text/Paths.h"

namespace zeb {
namespace {

// "/a/./b" and "/a//b" are one file.
std::string KeyOf(const std::string& path) {
  std::string key;
  for (std::size_t start = 0; start <= path.size();) {
    std::size_t end = std::min(path.find(kPathSeparator, start), path.size());
    std::string_view part = std::string_view(path).substr(start, end - start);
    if (!part.empty() && part != ".") key.append(1, kPathSeparator).append(part);
    start = end + 1;
  }
  return key;
}

}  // namespace

std::unique_ptr<DestinationsInProgress::Claim> DestinationsInProgress::Take(
    EventLoop& loop, const std::vector<std::string>& paths, Duration limit) {
  std::set<std::string> wanted;
  for (const std::string& path : paths) wanted.insert(KeyOf(path));
  auto allFree = [&] {
    return std::none_of(wanted.begin(), wanted.end(),
                        [&](const std::string& key) { return busy_.count(key) != 0; });
  };
  if (!allFree() && !loop.WaitUntil(allFree, limit))
    for (const std::string& key : busy_) wanted.erase(key);
  busy_.insert(wanted.begin(), wanted.end());
  return std::make_unique<Claim>(shared_from_this(), std::move(wanted));
}

DestinationsInProgress::Claim::~Claim() {
  for (const std::string& key : held_) owner_->busy_.erase(key);
}

bool DestinationsInProgress::Claim::Holds(const std::string& path) const {
  return held_.count(KeyOf(path)) != 0;
}

std::optional<std::int64_t> DestinationsInProgress::LastVersion(const std::string& destination) const {
  auto found = lastVersions_.find(KeyOf(destination));
  return found == lastVersions_.end() ? std::nullopt : std::optional<std::int64_t>(found->second);
}

void DestinationsInProgress::SetLastVersion(const std::string& destination, std::int64_t number) {
  lastVersions_[KeyOf(destination)] = number;
}

}  // namespace zeb
