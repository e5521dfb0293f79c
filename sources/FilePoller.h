// FilePoller: looks at many files once a second, all of them in one piece of work on one worker thread, and
// tells their watchers.
//
// Shared by all sources of an event loop; lives as long as any watch. Used on the loop's thread only. A share
// that does not answer holds up no other file for longer than kLookLimit: the work that waits for it is left
// to itself, and the files of that folder are not looked at until it has come back. So that dead shares
// cannot take all workers, from kManyHanging folders on their neighbours (the other folders in the folder
// above) are left out too, and with kMostHanging nothing is looked at until one has come back.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/FileSystem.h"

namespace zeb {

class FilePoller : public std::enable_shared_from_this<FilePoller> {
 public:
  static constexpr Duration kInterval = std::chrono::seconds(1);
  static constexpr Duration kLookLimit = std::chrono::seconds(2);
  static constexpr std::size_t kManyHanging = 8;
  static constexpr std::size_t kMostHanging = 16;

  // One file that is looked at for as long as its owner holds this.
  class Watch {
   public:
    const std::string& Path() const { return *path_; }
    // What the last look found; nothing: the file is missing or unreachable, or was not looked at yet.
    const std::optional<FileInfo>& Stamp() const { return stamp_; }

    std::function<void()> onLook;     // after each look
    std::function<void()> onSilence;  // once, when the file has not answered for kFileWorkLimit

   private:
    friend class FilePoller;
    Watch(std::shared_ptr<FilePoller> poller, const std::string& path);

    std::shared_ptr<FilePoller> poller_;
    std::shared_ptr<const std::string> path_;  // shared with a worker
    std::string folder_;
    std::optional<FileInfo> stamp_;
    std::optional<MonotonicTime> unansweredSince_;
    bool silenceTold_ = false;
  };

  // The loop's poller, made when there is none.
  static std::shared_ptr<FilePoller> Of(EventLoop& loop, FileSystem& files);

  // The first look is at the next tick. A watch that is added before another is looked at before it.
  std::shared_ptr<Watch> Add(const std::string& path);

 private:
  using WatchPtr = std::shared_ptr<Watch>;
  using Watches = std::vector<WatchPtr>;

  // What a worker does: it looks at one file after the other until it is told to stop.
  struct Looks {
    std::vector<std::shared_ptr<const std::string>> paths;
    std::vector<std::optional<FileInfo>> stamps;
    std::atomic<std::size_t> done = 0;
    std::atomic<bool> begun = false, stop = false;
    void Run(FileSystem& files);
  };
  // A look that does not end, and the folder that is left out for its sake.
  struct Hanging {
    std::string folder;
    std::shared_ptr<Looks> looks;
    std::size_t index;           // of the look
    std::weak_ptr<Watch> watch;  // whose file it is
  };

  FilePoller(EventLoop& loop, FileSystem& files) : loop_(loop), files_(files) {}
  void Tick();
  Watches Alive();
  bool LeftOut(const Watch& watch) const;
  void LookAt(Watches due);
  std::size_t LookAtSome(const Watches& due);
  void NoteUnanswered(Watch& watch);
  void ComeBack(const std::shared_ptr<Looks>& looks);
  static void Answer(Watch& watch);

  EventLoop& loop_;
  FileSystem& files_;
  std::vector<std::weak_ptr<Watch>> watches_;
  std::list<Hanging> hanging_;
  bool looking_ = false;
  Timer timer_;
};

}  // namespace zeb
