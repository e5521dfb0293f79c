// ConsoleOperator: the operator of a program without windows: everything becomes one line of the journal.
//
// Whoever asked for an action (a signal, a command) has confirmed it, so every question is answered with Yes
// at once, and none is written down: nobody is to read it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/EventLoop.h"
#include "platform/LineWriter.h"
#include "platform/Operator.h"

namespace zeb {

class ConsoleOperator : public Operator {
 public:
  // `clock`, when given, puts the time before each line (the system's journal adds its own).
  explicit ConsoleOperator(LineWriter& journal, const EventLoop* clock = nullptr);

  void Note(std::string_view line) override;
  void Show(MessageIcon icon, const std::string& text) override;
  void Ask(const std::string& question, std::function<void(bool)> answered) override;

 private:
  LineWriter& journal_;
  const EventLoop* clock_;
};

}  // namespace zeb
