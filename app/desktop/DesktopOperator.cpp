#include "app/desktop/DesktopOperator.h"

#include <utility>

namespace zeb {

DesktopOperator::DesktopOperator(Operator& journal, EventLoop& loop, Boxes& boxes, bool silent)
    : journal_(journal), loop_(loop), boxes_(boxes), silent_(silent) {}

void DesktopOperator::Note(std::string_view line) {
  journal_.Note(line);
}

void DesktopOperator::Show(MessageIcon icon, const std::string& text) {
  journal_.Show(icon, text);
  if (silent_) return;
  loop_.Post([this, icon, text, mark = epoch_.Now()] {
    if (mark.Holds()) boxes_.Show(frame_, icon, text);
  });
}

void DesktopOperator::Ask(const std::string& question, std::function<void(bool)> answered) {
  if (silent_) return journal_.Ask(question, std::move(answered));
  loop_.Post([this, question, answered = std::move(answered), mark = epoch_.Now()] {
    if (mark.Holds()) boxes_.Ask(frame_, question, answered);
  });
}

}  // namespace zeb
