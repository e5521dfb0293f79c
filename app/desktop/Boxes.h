// Boxes: message boxes and questions, none of which holds anything up: each is opened, and what follows it is
// a function that is called when it has been closed, on the loop's thread. Several may be open; but a message
// that is open already is not opened again, since an output may have the same complaint every few seconds.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Operator.h"

class QMessageBox;
class QWidget;

namespace zeb {

class Boxes {
 public:
  Boxes();
  ~Boxes();  // closes what is open; nobody is told
  Boxes(const Boxes&) = delete;
  Boxes& operator=(const Boxes&) = delete;

  // In front of `parent` (null: of no window). All texts are English, and shown in the chosen language.
  void Show(QWidget* parent, MessageIcon icon, const std::string& text, std::function<void()> closed = {});
  // Yes or No, with No as the default and as the answer of Escape.
  void Ask(QWidget* parent, const std::string& question, std::function<void(bool)> answered);
  // One of several; -1 when it was closed without choosing. The first one is the default.
  void Choose(QWidget* parent, const std::string& question, const std::vector<std::string>& choices,
              std::function<void(int)> chosen);

  // At most so many are open at a time; what else is shown is only in the journal.
  static constexpr std::size_t kMostOpen = 20;

 private:
  QMessageBox* Make(QWidget* parent, MessageIcon icon, const std::string& text);
  bool IsOpen(const std::string& text) const;

  struct State;
  const std::shared_ptr<State> state_;
};

}  // namespace zeb
