// JournalTail: keeps the last lines of the journal for those who look at the running publisher, and hands
// everything on to the operator behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "platform/EventLoop.h"
#include "platform/Operator.h"
#include "platform/Time.h"

namespace zeb {

class JournalTail : public Operator {
 public:
  static constexpr std::size_t kMost = 200;
  static constexpr std::size_t kMostForReading = 2000;  // where a person reads them in a window
  struct Line {
    WallTime moment{};
    std::string text;  // one line of UTF-8, cut at 1000 characters
  };

  // Both outlive this object.
  JournalTail(Operator& behind, const EventLoop& clock, std::size_t most = kMost)
      : behind_(behind), clock_(clock), most_(most) {}

  void Note(std::string_view line) override;
  void Show(MessageIcon icon, const std::string& text) override;
  void Ask(const std::string& question, std::function<void(bool)> answered) override;

  const std::deque<Line>& Lines() const { return lines_; }  // oldest first
  std::uint64_t Told() const { return told_; }              // lines so far, with those no longer kept
  std::function<void(const Line& line)> onLine;

 private:
  void Keep(std::string_view text);

  Operator& behind_;
  const EventLoop& clock_;
  const std::size_t most_;
  std::uint64_t told_ = 0;
  std::deque<Line> lines_;
};

}  // namespace zeb
