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
  key.reserve(path.size() + 1);
  for (std::size_t start = 0; start <= path.size();) {
    std::size_t end = std::min(path.find(kPathSeparator, start), path.size());
    std::string_view part = std::string_view(path).substr(start, end - start);
    if (!part.empty() && part != ".") key.append(1, kPathSeparator).append(part);
    start = end + 1;
  }
  return key;
}

}  // namespace

DestinationsInProgress::ClaimPtr DestinationsInProgress::Take(EventLoop& loop,
                                                              const std::vector<std::string>& paths,
                                                              Duration limit,
                                                              const std::function<bool()>& enough) {
  std::set<std::string> wanted;
  for (const std::string& path : paths) wanted.insert(KeyOf(path));
  bool all = false;
  const auto ready = [&] { return (all = TakeAll(wanted)) || (enough && enough()); };
  if (!ready()) static_cast<void>(loop.WaitUntil(ready, limit));
  if (!all) std::erase_if(wanted, [this](const std::string& key) { return !TakeOne(key); });
  return std::make_unique<Claim>(shared_from_this(), std::move(wanted));
}

bool DestinationsInProgress::TakeAll(const std::set<std::string>& keys) {
  const std::lock_guard lock(mutex_);
  if (std::any_of(keys.begin(), keys.end(), [this](const std::string& key) { return busy_.contains(key); }))
    return false;
  busy_.insert(keys.begin(), keys.end());
  return true;
}

bool DestinationsInProgress::TakeOne(const std::string& key) {
  const std::lock_guard lock(mutex_);
  return busy_.insert(key).second;
}

DestinationsInProgress::Claim::~Claim() {
  const std::lock_guard lock(owner_->mutex_);
  for (const std::string& key : held_) owner_->busy_.erase(key);
}

bool DestinationsInProgress::Claim::Holds(const std::string& path) const {
  return held_.contains(KeyOf(path));
}

bool DestinationsInProgress::Claim::Add(const std::string& path) {
  std::string key = KeyOf(path);
  if (!owner_->TakeOne(key)) return false;
  held_.insert(std::move(key));
  return true;
}

std::optional<std::int64_t> DestinationsInProgress::LastVersion(const std::string& destination) const {
  const std::lock_guard lock(mutex_);
  const auto found = lastVersions_.find(KeyOf(destination));
  return found == lastVersions_.end() ? std::nullopt : std::optional<std::int64_t>(found->second);
}

void DestinationsInProgress::SetLastVersion(const std::string& destination, std::int64_t number) {
  const std::lock_guard lock(mutex_);
  lastVersions_[KeyOf(destination)] = number;
}

}  // namespace zeb
