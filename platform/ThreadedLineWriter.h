// ThreadedLineWriter: lines wait in a queue and a thread writes them, so that a reader that hangs or a dead
// disk holds nobody up.
//
// The queue has a bound. Once it is full, lines are dropped until all that wait are out; then one line tells
// how many are missing, in their place and with the time of the first. Lines that the sink loses are counted
// in the same way, and told before the next one that gets through. The thread begins with the first line that
// needs it.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>

#include "platform/LineWriter.h"

namespace zeb {

class ThreadedLineWriter : public LineWriter {
 public:
  static constexpr std::size_t kMostWaiting = 1024 * 1024;        // bytes
  static constexpr auto kGrace = std::chrono::milliseconds(500);  // for what waits at the end

  struct Options {
    std::size_t mostWaiting = kMostWaiting;
    // Writes a line where that can never wait; false, with nothing written, where it would have to. Asked
    // first, on the caller's thread, while no line waits; may be null.
    LineSink atOnce = nullptr;
    // The thread lets lines come together for so long before it writes them, so that it need not be woken for
    // each.
    std::chrono::milliseconds gather{0};
  };

  explicit ThreadedLineWriter(LineSink sink) : ThreadedLineWriter(std::move(sink), Options()) {}
  ThreadedLineWriter(LineSink sink, Options options);
  ~ThreadedLineWriter() override;  // flushes for kGrace; a thread that hangs longer is left behind
  ThreadedLineWriter(const ThreadedLineWriter&) = delete;
  ThreadedLineWriter& operator=(const ThreadedLineWriter&) = delete;

  void Write(LogLine line) override;
  // Waits until every line is out; false when that takes longer than `limit`.
  bool Flush(std::chrono::milliseconds limit);

 private:
  struct State;
  std::shared_ptr<State> state_;  // shared with the thread
};

}  // namespace zeb
