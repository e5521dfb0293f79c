#include "sources/FilePoller.h"

#include <algorithm>
#include <exception>
#include <map>
#include <string_view>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "platform/WorkLane.h"
#include "text/Paths.h"

namespace zeb {

namespace {

// "/a/b/" → "/a/".
std::string_view FolderAbove(std::string_view folder) {
  if (!folder.empty()) folder.remove_suffix(1);
  return FolderPart(folder);
}

}  // namespace

// ---- The worker's side

void FilePoller::Looks::Run(FileSystem& files) {
  begun = true;
  for (std::size_t i = 0; i < paths.size() && !stop; ++i) {
    try {
      stamps[i] = files.Stat(*paths[i]);
    } catch (const std::exception&) {
      // As good as unreachable.
    }
    done = i + 1;
  }
}

// ---- Watches

FilePoller::Watch::Watch(std::shared_ptr<FilePoller> poller, const std::string& path)
    : poller_(std::move(poller)),
      path_(std::make_shared<const std::string>(path)),
      folder_(FolderPart(path)) {}

std::shared_ptr<FilePoller> FilePoller::Of(EventLoop& loop, FileSystem& files) {
  using Key = std::pair<EventLoop*, FileSystem*>;
  static thread_local std::map<Key, std::weak_ptr<FilePoller>> pollers;
  std::erase_if(pollers, [](const auto& entry) { return entry.second.expired(); });
  std::weak_ptr<FilePoller>& known = pollers[Key(&loop, &files)];
  if (auto poller = known.lock()) return poller;
  std::shared_ptr<FilePoller> poller(new FilePoller(loop, files));
  known = poller;
  poller->timer_ = loop.Every(kInterval, [weak = std::weak_ptr(poller)] {
    if (const auto self = weak.lock()) self->Tick();
  });
  return poller;
}

FilePoller::WatchPtr FilePoller::Add(const std::string& path) {
  WatchPtr watch(new Watch(shared_from_this(), path));
  watches_.push_back(watch);
  return watch;
}

// ---- Looking

FilePoller::Watches FilePoller::Alive() {
  Watches alive;
  alive.reserve(watches_.size());
  for (const auto& watch : watches_)
    if (auto held = watch.lock()) alive.push_back(std::move(held));
  if (alive.size() < watches_.size()) watches_.assign(alive.begin(), alive.end());
  return alive;
}

bool FilePoller::LeftOut(const Watch& watch) const {
  if (hanging_.size() >= kMostHanging) return true;
  const bool neighboursToo = hanging_.size() >= kManyHanging;
  return std::any_of(hanging_.begin(), hanging_.end(), [&](const Hanging& hanging) {
    return hanging.folder == watch.folder_ ||
           (neighboursToo && FolderAbove(hanging.folder) == FolderAbove(watch.folder_));
  });
}

void FilePoller::Tick() {
  Watches due = Alive();
  if (!hanging_.empty())
    for (const WatchPtr& watch : due) NoteUnanswered(*watch);
  if (looking_ || due.empty()) return;
  looking_ = true;
  loop_.Start("look at the information files", [self = shared_from_this(), due = std::move(due)] {
    try {
      self->LookAt(due);
    } catch (const std::exception&) {
      ReportException("looking at the information files", Report::kQuietly);
    }
    self->looking_ = false;
  });
}

// Each round looks at all that are left, except those that must be left out, until one does not answer.
void FilePoller::LookAt(Watches due) {
  while (!due.empty()) {
    if (!hanging_.empty()) std::erase_if(due, [this](const WatchPtr& watch) { return LeftOut(*watch); });
    due.erase(due.begin(), due.begin() + static_cast<std::ptrdiff_t>(LookAtSome(due)));
  }
}

// Gives how many need no further look now.
std::size_t FilePoller::LookAtSome(const Watches& due) {
  if (due.empty()) return 0;
  const auto looks = std::make_shared<Looks>();
  for (const WatchPtr& watch : due) looks->paths.push_back(watch->path_);
  looks->stamps.resize(looks->paths.size());
  const MonotonicTime since = loop_.Monotonic();
  const bool allDone = loop_.RunBlocking([looks, &files = files_] { looks->Run(files); }, kLookLimit,
                                         [weak = weak_from_this(), looks] {
                                           if (const auto self = weak.lock()) self->ComeBack(looks);
                                         });
  looks->stop = true;
  const std::size_t done = looks->done;
  for (std::size_t i = 0; i < done; ++i) due[i]->stamp_ = looks->stamps[i];
  for (std::size_t i = 0; i < done; ++i) Answer(*due[i]);
  // When none was begun every worker is busy: the next tick tries again.
  if (allDone || done == due.size() || !looks->begun) return due.size();
  due[done]->unansweredSince_ = since;
  hanging_.push_back({due[done]->folder_, looks, done, due[done]});
  return done + 1;
}

void FilePoller::Answer(Watch& watch) {
  watch.unansweredSince_.reset();
  watch.silenceTold_ = false;
  try {
    if (const auto tell = watch.onLook) tell();
  } catch (const std::exception&) {
    ReportException("looking at an information file", Report::kQuietly);
  }
}

// The look that hung, or was slow, has ended, and with it the reason to leave the folder out.
void FilePoller::ComeBack(const std::shared_ptr<Looks>& looks) {
  const auto found = std::find_if(hanging_.begin(), hanging_.end(),
                                  [&](const Hanging& hanging) { return hanging.looks == looks; });
  if (found == hanging_.end()) return;
  const WatchPtr watch = found->watch.lock();
  const std::size_t index = found->index;
  hanging_.erase(found);
  if (!watch || looks->done <= index) return;
  watch->stamp_ = looks->stamps[index];
  Answer(*watch);
}

void FilePoller::NoteUnanswered(Watch& watch) {
  if (!LeftOut(watch)) return;
  const MonotonicTime now = loop_.Monotonic();
  if (!watch.unansweredSince_) watch.unansweredSince_ = now;
  if (watch.silenceTold_ || now - *watch.unansweredSince_ < kFileWorkLimit) return;
  watch.silenceTold_ = true;
  if (const auto tell = watch.onSilence) tell();
}

}  // namespace zeb
