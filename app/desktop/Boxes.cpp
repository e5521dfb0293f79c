#include "app/desktop/Boxes.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

QMessageBox::Icon IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::kInformation:
      return QMessageBox::Information;
    case MessageIcon::kQuestion:
      return QMessageBox::Question;
    case MessageIcon::kWarning:
    case MessageIcon::kExclamation:
      break;
  }
  return QMessageBox::Warning;
}

}  // namespace

struct Boxes::State {
  struct Box {
    QPointer<QObject> alive;  // not of the box's own class, which it is no longer while it is destroyed
    QMessageBox* box;
    std::string text;
  };
  std::vector<Box> open;

  void Forget(const QObject* box) {
    std::erase_if(open, [box](const Box& kept) { return kept.alive.isNull() || kept.alive == box; });
  }
};

Boxes::Boxes() : state_(std::make_shared<State>()) {}

Boxes::~Boxes() {
  for (const State::Box& kept : std::exchange(state_->open, {})) {
    if (kept.alive.isNull()) continue;
    kept.box->disconnect();
    delete kept.box;
  }
}

bool Boxes::IsOpen(const std::string& text) const {
  return std::any_of(state_->open.begin(), state_->open.end(), [&](const State::Box& kept) {
    return kept.text == text && !kept.alive.isNull() && kept.box->isVisible();
  });
}

QMessageBox* Boxes::Make(QWidget* parent, MessageIcon icon, const std::string& text) {
  auto* box = new QMessageBox(IconOf(icon), "ZEB", T(text), QMessageBox::NoButton, parent);
  box->setTextFormat(Qt::PlainText);  // titles and answers of servers are no markup
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowModality(parent != nullptr ? Qt::WindowModal : Qt::NonModal);
  state_->open.push_back({box, box, text});
  QObject::connect(box, &QObject::destroyed, [state = std::weak_ptr(state_)](const QObject* gone) {
    if (const auto kept = state.lock()) kept->Forget(gone);
  });
  return box;
}

void Boxes::Show(QWidget* parent, MessageIcon icon, const std::string& text, std::function<void()> closed) {
  if (IsOpen(text) || state_->open.size() >= kMostOpen) return;
  QMessageBox* box = Make(parent, icon, text);
  box->setDefaultButton(box->addButton(T("OK"), QMessageBox::AcceptRole));
  QObject::connect(box, &QDialog::finished, [state = state_, box, closed = std::move(closed)](int) {
    state->Forget(box);
    if (closed) closed();
  });
  box->open();
}

void Boxes::Ask(QWidget* parent, const std::string& question, std::function<void(bool)> answered) {
  QMessageBox* box = Make(parent, MessageIcon::kQuestion, question);
  QPushButton* yes = box->addButton(T("&Yes"), QMessageBox::YesRole);
  QPushButton* no = box->addButton(T("&No"), QMessageBox::NoRole);
  box->setDefaultButton(no);
  box->setEscapeButton(no);
  QObject::connect(box, &QDialog::finished, [state = state_, box, yes, answered = std::move(answered)](int) {
    state->Forget(box);
    answered(box->clickedButton() == yes);
  });
  box->open();
}

void Boxes::Choose(QWidget* parent, const std::string& question, const std::vector<std::string>& choices,
                   std::function<void(int)> chosen) {
  QMessageBox* box = Make(parent, MessageIcon::kQuestion, question);
  std::vector<QAbstractButton*> buttons;
  buttons.reserve(choices.size());
  for (const std::string& choice : choices)
    buttons.push_back(box->addButton(T(choice), QMessageBox::ActionRole));
  QPushButton* cancel = box->addButton(T("Cancel"), QMessageBox::RejectRole);
  box->setEscapeButton(cancel);
  if (!buttons.empty()) box->setDefaultButton(static_cast<QPushButton*>(buttons.front()));
  QObject::connect(box, &QDialog::finished, [state = state_, box, buttons, chosen = std::move(chosen)](int) {
    state->Forget(box);
    const auto found = std::find(buttons.begin(), buttons.end(), box->clickedButton());
    chosen(found == buttons.end() ? -1 : static_cast<int>(found - buttons.begin()));
  });
  box->open();
}

}  // namespace zeb
