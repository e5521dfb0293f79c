// Operator: the person in charge, as the engine sees them: a journal line, a message box, a question.
//
// zebd writes all of it to standard error; the desktop program shows it. Never waits inside a task.
#pragma once

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
  // A Yes/No question with No as the default. Where nobody is watching the answer is Yes: whoever asked for
  // the action (a signal, a command) has confirmed it.
  virtual bool Ask(const std::string& question) = 0;
};

}  // namespace zeb
