#include "outputs/file/DestinationsInProgress.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "text/LetterCase.h"
#include "text/Paths.h"

namespace zeb {
namespace {

// Whether a path is its own key, as nearly all are.
bool IsKey(std::string_view path) {
  if (path.empty() || path.front() != kPathSeparator || path.back() == kPathSeparator) return false;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    if (path[i] != kPathSeparator) continue;
    const char next = path[i + 1];
    if (next == kPathSeparator) return false;
    if (next == '.' && (i + 2 == path.size() || path[i + 2] == kPathSeparator)) return false;
  }
  return true;
}

// "/a/./b" and "/a//b" are one file; so are "C:\\A" and "c:/a" on Windows.
std::string KeyOf(std::string path) {
#ifdef _WIN32
  for (char& c : path) c = c == '/' ? '\\' : AsciiLower(c);
#endif
  if (IsKey(path)) return path;
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

DestinationsInProgress::ClaimPtr DestinationsInProgress::Take(EventLoop& loop, std::vector<std::string> paths,
                                                              Duration limit,
                                                              const std::function<bool()>& enough) {
  std::set<std::string> keys;
  for (std::string& path : paths) keys.insert(KeyOf(std::move(path)));
  auto claim = std::make_unique<Claim>(shared_from_this(), std::move(keys));
  std::set<std::string>& wanted = claim->held_;
  bool all = false;
  const auto ready = [&] { return (all = TakeAll(wanted)) || (enough && enough()); };
  if (!ready()) static_cast<void>(loop.WaitUntil(ready, limit));
  if (!all) std::erase_if(wanted, [this](const std::string& key) { return !TakeOne(key); });
  return claim;
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
  for (const std::string& key : held_) {
    const auto busy = owner_->busy_.find(key);
    if (busy != owner_->busy_.end() && busy->data() == key.data()) owner_->busy_.erase(busy);
  }
}

bool DestinationsInProgress::Claim::Holds(const std::string& path) const {
  return IsKey(path) ? held_.contains(path) : held_.contains(KeyOf(path));
}

bool DestinationsInProgress::Claim::Add(const std::string& path) {
  const auto [key, isNew] = held_.insert(KeyOf(path));
  if (!isNew) return false;
  if (owner_->TakeOne(*key)) return true;
  held_.erase(key);
  return false;
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
