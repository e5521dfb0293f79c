// QtMailbox: work for the loop's thread, from any thread. Private to QtLoop.
//
// Shared with worker threads, which may outlive the loop: after Close, work is dropped.
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace zeb {

class QtMailbox {
 public:
  // `deliver` is called on the present thread, once after any number of posts.
  explicit QtMailbox(std::function<void()> deliver);
  ~QtMailbox();
  QtMailbox(const QtMailbox&) = delete;
  QtMailbox& operator=(const QtMailbox&) = delete;

  void Post(std::function<void()> work);  // on the loop's thread
  void PostFromAnyThread(std::function<void()> work);

  // How much is waiting. Posts from here on ask for a delivery of their own.
  std::size_t BeginDelivery();
  // The next work, or nothing. While more waits a further delivery is asked for first, so that a nested event
  // loop (a message box) goes on delivering.
  std::function<void()> Take();
  void Close();

 private:
  class Receiver;
  void Ask(std::unique_lock<std::mutex> lock);

  std::mutex mutex_;
  std::deque<std::function<void()>> work_;
  bool asked_ = false;  // a delivery is on its way
  std::unique_ptr<Receiver> receiver_;
  std::atomic<int> asking_ = 0;  // threads that are at the receiver, without the mutex
};

}  // namespace zeb
