#include "platform/ThreadedLineWriter.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace zeb {
namespace {

// Lines that nobody will ever see, in one place of their file.
class Missing {
 public:
  explicit operator bool() const { return count_ > 0; }

  void Add(LogLine line) {
    if (count_++ == 0) first_ = {std::move(line.file), std::move(line.time), ""};
  }
  void Add(Missing later) {
    if (count_ == 0) first_ = std::move(later.first_);
    count_ += later.count_;
  }
  LogLine Told() const {
    LogLine line = first_;
    line.text = std::to_string(count_) + (count_ == 1 ? " line was" : " lines were") +
                " dropped here: they could not be written in time";
    return line;
  }

 private:
  std::uint64_t count_ = 0;
  LogLine first_;
};

std::size_t Size(const LogLine& line) {
  return sizeof line + line.file.size() + line.time.size() + line.text.size();
}

}  // namespace

struct ThreadedLineWriter::State {
  State(LineSink lineSink, Options given) : sink(std::move(lineSink)), options(std::move(given)) {}

  const LineSink sink;  // used on the thread only
  const Options options;
  std::mutex mutex;
  std::condition_variable wanted;  // a line, or the end
  std::condition_variable allOut;
  std::deque<LogLine> lines;
  std::size_t waiting = 0;  // bytes
  Missing behind;           // dropped after the last of `lines`
  Missing lost;             // by the sink, since the last line that it wrote
  bool threadRuns = false, writing = false, gathering = false, hurry = false, closed = false;

  bool AllOut() const { return lines.empty() && !behind && !writing; }
  bool TryAtOnce(const LogLine& line) const {
    return options.atOnce && AllOut() && !lost && Put(options.atOnce, line);
  }

  void Take(LogLine line) {
    const std::size_t size = Size(line);
    if (behind || waiting + size > options.mostWaiting) return behind.Add(std::move(line));
    waiting += size;
    lines.push_back(std::move(line));
  }

  static bool Put(const LineSink& to, const LogLine& line) {
    try {
      return to(line);
    } catch (const std::exception&) {
      return false;
    }
  }

  // What the thread does. `self` keeps the state while it lives.
  static void Work(const std::shared_ptr<State>& self) {
    std::unique_lock lock(self->mutex);
    while (self->Next(lock)) self->WriteNext(lock);
  }

  // False: the thread is to end.
  bool Next(std::unique_lock<std::mutex>& lock) {
    writing = false;
    if (AllOut()) {
      hurry = false;
      allOut.notify_all();
      wanted.wait(lock, [this] { return closed || !AllOut(); });
      Gather(lock);
    }
    writing = true;
    return !closed;
  }

  // A queue that is half full waits no longer.
  void Gather(std::unique_lock<std::mutex>& lock) {
    if (options.gather.count() == 0) return;
    gathering = true;
    wanted.wait_for(lock, options.gather,
                    [this] { return closed || hurry || waiting > options.mostWaiting / 2; });
    gathering = false;
  }

  bool ThreadMustHear() const { return !gathering || waiting > options.mostWaiting / 2; }

  void WriteNext(std::unique_lock<std::mutex>& lock) {
    if (lines.empty()) lost.Add(std::exchange(behind, Missing()));
    const bool hasLine = !lines.empty();
    LogLine line;
    if (hasLine) {
      line = std::move(lines.front());
      lines.pop_front();
      waiting -= Size(line);
    }
    const LogLine told = lost ? lost.Told() : LogLine();
    lock.unlock();
    const bool nothingLost = !lost || Put(sink, told);
    const bool written = hasLine && nothingLost && Put(sink, line);
    lock.lock();
    if (nothingLost) lost = Missing();
    if (hasLine && !written) lost.Add(std::move(line));
  }
};

ThreadedLineWriter::ThreadedLineWriter(LineSink sink, Options options)
    : state_(std::make_shared<State>(std::move(sink), std::move(options))) {}

ThreadedLineWriter::~ThreadedLineWriter() {
  Flush(kGrace);
  const std::lock_guard lock(state_->mutex);
  state_->closed = true;
  state_->wanted.notify_one();
}

// Without memory or descriptors for a thread the lines wait; the next one tries again.
void ThreadedLineWriter::Write(LogLine line) {
  std::unique_lock lock(state_->mutex);
  if (state_->TryAtOnce(line)) return;
  state_->Take(std::move(line));
  if (state_->threadRuns) {
    const bool tell = state_->ThreadMustHear();
    lock.unlock();  // first, or it would wake up to wait for the mutex
    if (tell) state_->wanted.notify_one();
    return;
  }
  try {
    std::thread([state = state_] { State::Work(state); }).detach();
    state_->threadRuns = true;
  } catch (const std::system_error&) {
  }
}

bool ThreadedLineWriter::Flush(std::chrono::milliseconds limit) {
  std::unique_lock lock(state_->mutex);
  state_->hurry = true;
  state_->wanted.notify_one();
  return state_->allOut.wait_for(lock, limit, [this] { return state_->AllOut(); });
}

}  // namespace zeb
