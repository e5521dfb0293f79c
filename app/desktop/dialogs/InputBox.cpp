#include "app/desktop/dialogs/InputBox.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/DialogFrame.h"
#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

constexpr int kWidth = 320;

class InputDialog : public DialogFrame {
 public:
  InputDialog(Desk& desk, QWidget* parent, const InputBox& box,
              std::function<void(const std::string&)> accepted)
      : DialogFrame(parent, "InputBox", box.title), desk_(desk), box_(box), accepted_(std::move(accepted)) {
    QWidget* field = box_.choices.empty() ? Line() : List();
    field->setMinimumWidth(kWidth);
    Contents()->addWidget(Caption(field, box_.name.c_str(), box_.caption));
    Contents()->addWidget(field);
    AddButton("OK", "OK", [this] { Take(); })->setDefault(true);
    AddCancel();
    field->setFocus();
  }

 private:
  QWidget* Line() {
    line_ = new QLineEdit(QString::fromStdString(box_.text), this);
    line_->selectAll();
    return line_;
  }

  QWidget* List() {
    list_ = new QComboBox(this);
    for (const std::string& choice : box_.choices) {
      list_->addItem(T(choice), QString::fromStdString(choice));
      if (choice == box_.text) list_->setCurrentIndex(list_->count() - 1);
    }
    return list_;
  }

  std::string Text() const {
    return (line_ != nullptr ? line_->text() : list_->currentData().toString()).toStdString();
  }

  void Take() {
    const std::string text = Text();
    const std::string wrong = box_.check ? box_.check(text) : std::string();
    if (!wrong.empty()) {
      desk_.boxes.Show(this, MessageIcon::kExclamation, wrong);
      if (line_ != nullptr) line_->setFocus();
      return;
    }
    accept();
    accepted_(text);
  }

  Desk& desk_;
  const InputBox box_;
  const std::function<void(const std::string&)> accepted_;
  QLineEdit* line_ = nullptr;  // one of the two
  QComboBox* list_ = nullptr;
};

}  // namespace

void OpenInputBox(Desk& desk, QWidget* parent, const InputBox& box,
                  std::function<void(const std::string& text)> accepted) {
  (new InputDialog(desk, parent, box, std::move(accepted)))->open();
}

}  // namespace zeb
