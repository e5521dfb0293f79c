#include "platform/qt/QtMailbox.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <thread>
#include <utility>

namespace zeb {

// Lives on the loop's thread, and is reached by an event, which wakes the loop; by work that it delivers,
// through a timer of no length. An event would be handled before sockets and timers, so that work which posts
// work would keep them waiting for ever.
class QtMailbox::Receiver : public QObject {
 public:
  explicit Receiver(std::function<void()> deliver) : deliver_(std::move(deliver)) {
    next_.setSingleShot(true);
    connect(&next_, &QTimer::timeout, this, [this] { Deliver(); });
  }

  void Ask() {
    if (QThread::currentThread() == thread() && delivering_ > 0) {
      next_.start(0);
    } else {
      QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
  }

 protected:
  void customEvent(QEvent*) override { Deliver(); }

 private:
  // Also while it is at it, when the work opens a nested event loop.
  void Deliver() {
    ++delivering_;
    deliver_();
    --delivering_;
  }

  std::function<void()> deliver_;
  int delivering_ = 0;
  QTimer next_;
};

QtMailbox::QtMailbox(std::function<void()> deliver)
    : receiver_(std::make_unique<Receiver>(std::move(deliver))) {}

QtMailbox::~QtMailbox() = default;

void QtMailbox::Post(std::function<void()> work) {
  PostFromAnyThread(std::move(work));
}

void QtMailbox::PostFromAnyThread(std::function<void()> work) {
  std::unique_lock lock(mutex_);
  if (!receiver_) return;
  work_.push_back(std::move(work));
  Ask(std::move(lock));
}

// The loop is woken without the mutex, or it would wake up to wait for it.
void QtMailbox::Ask(std::unique_lock<std::mutex> lock) {
  if (std::exchange(asked_, true)) return;
  Receiver& receiver = *receiver_;
  ++asking_;
  lock.unlock();
  receiver.Ask();
  --asking_;
}

std::size_t QtMailbox::BeginDelivery() {
  const std::lock_guard lock(mutex_);
  asked_ = false;
  return work_.size();
}

std::function<void()> QtMailbox::Take() {
  std::unique_lock lock(mutex_);
  if (work_.empty()) return nullptr;
  auto work = std::move(work_.front());
  work_.pop_front();
  if (!work_.empty()) Ask(std::move(lock));
  return work;
}

void QtMailbox::Close() {
  std::unique_ptr<Receiver> receiver;
  std::deque<std::function<void()>> dropped;
  {
    const std::lock_guard lock(mutex_);
    receiver = std::move(receiver_);
    dropped.swap(work_);
  }
  while (asking_ > 0) std::this_thread::yield();
}

}  // namespace zeb
