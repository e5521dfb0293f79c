#include "app/ConsoleOperator.h"

#include "text/OneLine.h"
#include "text/SharedTime.h"

namespace zeb {

ConsoleOperator::ConsoleOperator(LineWriter& journal, const EventLoop* clock)
    : journal_(journal), clock_(clock) {}

// Titles and server answers end up here: what they hold must neither begin a line of its own nor steer a
// terminal.
void ConsoleOperator::Note(std::string_view line) {
  std::string time = clock_ != nullptr ? FormatDateTime(clock_->Now(), "hh:nn:ss ") : std::string();
  journal_.Write({"", std::move(time), OneLine(line, line.size())});
}

void ConsoleOperator::Show(MessageIcon, const std::string& text) {
  Note(text);
}

void ConsoleOperator::Ask(const std::string&, std::function<void(bool)> answered) {
  answered(true);
}

}  // namespace zeb
