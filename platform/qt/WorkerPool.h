// WorkerPool: the threads that do what may block, so that the loop's thread never does.
//
// Owned by an event loop, which calls it on its own thread. A few threads serve everybody; more are begun
// only while some have been at one job for so long that they seem to hang, and never more than `most`.
// Idle ones end. A thread that hangs cannot be stopped: it is left behind when the pool goes.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace zeb {

class WorkerPool {
 public:
  static constexpr std::size_t kUsualThreads = 16;
  static constexpr std::size_t kMostThreads = 64;
  static constexpr auto kSeemsToHang = std::chrono::seconds(1);

  explicit WorkerPool(std::size_t usual = kUsualThreads, std::size_t most = kMostThreads);
  ~WorkerPool();  // drops what has not begun, and waits a moment for what has
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // False: it waits for a thread, as in Crowded.
  bool Submit(std::function<void()> job);
  // True while jobs wait for a thread: then Relieve is to be called again after kSeemsToHang.
  bool Crowded() const;
  // Begins a thread for the jobs that wait, if one is due.
  void Relieve();

 private:
  struct State;
  std::shared_ptr<State> state_;  // shared with the threads
};

}  // namespace zeb
