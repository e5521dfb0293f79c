// JournalTail: keeps the last lines of the journal for those who look at the running publisher, and hands
// everything on to the operator behind it.
#pragma once

#include <cstddef>
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
  struct Line {
    WallTime moment{};
    std::string text;  // one line of UTF-8, cut at 1000 characters
  };

  // Both outlive this object.
  JournalTail(Operator& behind, const EventLoop& clock) : behind_(behind), clock_(clock) {}

  void Note(std::string_view line) override;
  void Show(MessageIcon icon, const std::string& text) override;
  void Ask(const std::string& question, std::function<void(bool)> answered) override;

  const std::deque<Line>& Lines() const { return lines_; }  // oldest first
  std::function<void(const Line& line)> onLine;

 private:
  void Keep(std::string_view text);

  Operator& behind_;
  const EventLoop& clock_;
  std::deque<Line> lines_;
};

}  // namespace zeb
