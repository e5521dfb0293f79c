#include "templates/TemplateStore.h"

#include <chrono>
#include <iterator>
#include <optional>
#include <utility>

namespace zeb {
namespace {

// The coarsest clock of any file system in use ticks every two seconds.
constexpr Duration kLongestTick = std::chrono::seconds(2);

bool SameState(const FileInfo& a, const FileInfo& b) {
  return a.size == b.size && a.modified == b.modified && a.changed == b.changed && a.inode == b.inode &&
         a.device == b.device;
}

}  // namespace

Result<std::shared_ptr<const PageTemplate>> TemplateStore::Load(FileSystem& files, const std::string& path) {
  // Looked at before it is read: what changes in between is then seen at the next use.
  const std::optional<FileInfo> info = files.Stat(path);
  if (info)
    if (Page known = KnownFor(path, *info)) return known;
  Result<std::string> bytes = files.Read(path, kMaxFileBytes);
  if (!bytes || !info) Forget(path);
  if (!bytes) return bytes.AsFailure();
  Page page = PageTemplate::FromBytes(bytes.Value());
  if (info) page = Keep(path, *info, std::move(page));
  return page;
}

TemplateStore::Page TemplateStore::KnownFor(const std::string& path, const FileInfo& info) {
  const std::lock_guard lock(mutex_);
  const auto found = byPath_.find(path);
  if (found == byPath_.end() || !found->second->settled || !SameState(found->second->info, info))
    return nullptr;
  entries_.splice(entries_.begin(), entries_, found->second);
  Weigh(*found->second);
  Page page = found->second->page;
  MakeRoom();
  return page;
}

// What to use: the page that is known already when it is the same, since it may be compiled.
TemplateStore::Page TemplateStore::Keep(const std::string& path, const FileInfo& info, Page page) {
  const std::lock_guard lock(mutex_);
  if (const auto found = byPath_.find(path); found == byPath_.end()) {
    entries_.emplace_front().path = path;
    byPath_[entries_.front().path] = entries_.begin();
  } else {
    entries_.splice(entries_.begin(), entries_, found->second);
  }
  Entry& entry = entries_.front();
  if (!entry.page || !SameState(entry.info, info)) entry.firstSeen = info.seen;
  entry.info = info;
  entry.settled = info.seen - entry.firstSeen >= kLongestTick;
  if (!entry.page || !entry.page->IsSame(*page)) entry.page = std::move(page);
  Weigh(entry);
  page = entry.page;
  MakeRoom();
  return page;
}

void TemplateStore::Forget(const std::string& path) {
  const std::lock_guard lock(mutex_);
  if (const auto found = byPath_.find(path); found != byPath_.end()) Erase(found->second);
}

// A page grows when it is compiled for another header.
void TemplateStore::Weigh(Entry& entry) {
  bytes_ -= entry.bytes;
  entry.bytes = sizeof(Entry) + entry.path.capacity() + entry.page->Bytes();
  bytes_ += entry.bytes;
}

void TemplateStore::MakeRoom() {
  while (!entries_.empty() && (bytes_ > mostBytes_ || entries_.size() > mostFiles_))
    Erase(std::prev(entries_.end()));
}

void TemplateStore::Erase(Entries::iterator entry) {
  bytes_ -= entry->bytes;
  byPath_.erase(entry->path);
  entries_.erase(entry);
}

std::size_t TemplateStore::Files() const {
  const std::lock_guard lock(mutex_);
  return entries_.size();
}

std::size_t TemplateStore::Bytes() const {
  const std::lock_guard lock(mutex_);
  return bytes_;
}

}  // namespace zeb
