// Operator: the person in charge, as the engine sees them: a journal line, a message box, a question.
//
// zebd writes all of it to standard error; the desktop program shows it. Never waits inside a task.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace zeb {

enum class MessageIcon { kInformation, kWarning, kExclamation, kQuestion };

class Operator {
 public:
  virtual ~Operator() = default;

  // One line for the journal: a noteworthy event, whatever the debug level.
  virtual void Note(std::string_view line) = 0;
  // A message box with an OK button (a journal line where nobody is watching).
  virtual void Show(MessageIcon icon, const std::string& text) = 0;
  // A Yes/No question with No as the default. `answered` is called once, with whether it is Yes: on the
  // loop's thread, perhaps before this returns, perhaps much later, and whatever was asked about may have
  // gone by then. Where nobody is watching the answer is Yes: whoever asked for the action (a signal, a
  // command) has confirmed it.
  virtual void Ask(const std::string& question, std::function<void(bool)> answered) = 0;
};

}  // namespace zeb
