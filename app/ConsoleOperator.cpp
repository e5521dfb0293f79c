#include "app/ConsoleOperator.h"

#include "text/SharedTime.h"

namespace zeb {

ConsoleOperator::ConsoleOperator(std::ostream& out, const EventLoop* clock) : out_(out), clock_(clock) {}

// Titles and server answers end up here: what they hold must neither begin a line of its own nor steer a
// terminal.
void ConsoleOperator::Note(std::string_view line) {
  std::string text;
  text.reserve(line.size() + 10);
  if (clock_ != nullptr) text += FormatDateTime(clock_->Now(), "hh:nn:ss") + ' ';
  bool blank = false;
  for (char c : line) {
    const auto byte = static_cast<unsigned char>(c);
    const bool control = byte < 0x20 || byte == 0x7F;
    if (!control)
      text += c;
    else if (!blank)
      text += ' ';
    blank = control || c == ' ';
  }
  text += '\n';
  out_.write(text.data(), static_cast<std::streamsize>(text.size()));
  out_.flush();
  out_.clear();  // a journal that was away for a while is written to again
}

void ConsoleOperator::Show(MessageIcon, const std::string& text) {
  Note(text);
}

bool ConsoleOperator::Ask(const std::string& question) {
  Note(question + " Yes.");
  return true;
}

}  // namespace zeb
