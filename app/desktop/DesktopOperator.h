// DesktopOperator: the person before the screen. Notes go to the journal; what is to be shown is shown in a
// box and noted too; questions wait for the answer without holding anything up.
//
// The engine shows and asks from inside tasks, so boxes open in a later turn of the loop. Silent (/SILENT):
// no boxes; what would be shown is noted, and a question is answered as where nobody is watching.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "app/desktop/Boxes.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"
#include "platform/Operator.h"

namespace zeb {

class DesktopOperator : public Operator {
 public:
  // All outlive this object. `journal` is where lines go.
  DesktopOperator(Operator& journal, EventLoop& loop, Boxes& boxes, bool silent);

  void Note(std::string_view line) override;
  void Show(MessageIcon icon, const std::string& text) override;
  void Ask(const std::string& question, std::function<void(bool)> answered) override;

  // The window in front of which boxes open; null: none yet.
  void SetFrame(QWidget* frame) { frame_ = frame; }

 private:
  Operator& journal_;
  EventLoop& loop_;
  Boxes& boxes_;
  const bool silent_;
  QWidget* frame_ = nullptr;
  Epoch epoch_;
};

}  // namespace zeb
