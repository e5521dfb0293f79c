// ConsoleOperator: the operator of a program without windows: everything becomes one line of the journal.
//
// Whoever asked for an action (a signal, a command) has confirmed it, so every question is answered with Yes.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "platform/EventLoop.h"
#include "platform/Operator.h"

namespace zeb {

class ConsoleOperator : public Operator {
 public:
  // `clock`, when given, puts the time before each line (the system's journal adds its own).
  explicit ConsoleOperator(std::ostream& out, const EventLoop* clock = nullptr);

  void Note(std::string_view line) override;
  void Show(MessageIcon icon, const std::string& text) override;
  bool Ask(const std::string& question) override;

 private:
  std::ostream& out_;
  const EventLoop* clock_;
};

}  // namespace zeb
