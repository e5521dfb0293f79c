#include "outputs/file/DestinationsInProgress.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace zeb {
namespace {

// "/a/./b" and "/a//b" are one file.
std::string KeyOf(const std::string& path) {
  return std::filesystem::path(path).lexically_normal().string();
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
