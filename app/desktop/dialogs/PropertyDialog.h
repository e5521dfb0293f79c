// PropertyDialog: a sheet of settings drawn: its groups and fields, OK and Cancel, and what goes wrong in a
// box with the field at fault in focus.
//
// Deletes itself when it is closed. The sheet's draft must be owned by `store` (or by a function that the
// dialog keeps), so that it lives as long as the dialog. Nothing is stored before OK; Cancel forgets all.
#pragma once

#include <QDialog>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/desktop/dialogs/FieldWidgets.h"

class QBoxLayout;
class QFormLayout;
class QLabel;
class QPushButton;

namespace zeb {

// What a kPairs field is drawn by: the widget, and how many pairs are in it.
struct PairsField {
  QWidget* widget = nullptr;
  std::function<int()> count;
};

class PropertyDialog : public QDialog {
 public:
  // `window` gives templates something to show, and may be null.
  PropertyDialog(Desk& desk, ServicePtr window, PropertySheet sheet, PairsField pairs = {});
  ~PropertyDialog() override;

  // Called on OK, once the draft holds what was entered. A failure is shown, and the dialog stays.
  std::function<Outcome()> store;
  // Any field is another now. After the constructor.
  std::function<void(const Entries&)> onChanged;

  // Beside OK and Cancel.
  QPushButton* AddButton(const std::string& caption, std::function<void()> pressed);
  // Puts what is entered into the draft; what is wrong is shown, and false.
  bool TakeOver();
  Entries Entered() const;
  FieldWidget* Field(const std::string& name) const;  // null for a note and for a name there is not
  void SetNote(const std::string& name, const QString& text);
  void OpenToFit();  // large enough for what is in it, as far as the screen goes

 private:
  struct Row {
    QLabel* label = nullptr;  // null for a switch
    std::unique_ptr<FieldWidget> field;
    QWidget* whole = nullptr;
  };

  void AddRow(const PropertyField& field);
  QString Caption(const std::string& english);
  void Enable();
  void Press();
  void Show(const SheetProblem& problem);

  Desk& desk_;
  const ServicePtr window_;
  const PropertySheet sheet_;
  const PairsField pairs_;
  QBoxLayout* body_ = nullptr;
  QFormLayout* form_ = nullptr;
  QBoxLayout* buttons_ = nullptr;
  QWidget* content_ = nullptr;
  QString letters_;  // that lead to a field already
  std::map<std::string, Row, std::less<>> rows_;
  std::vector<QLabel*> labels_;
};

// "&" before the first letter or digit of the text that `taken` does not have, which then has it; as it is
// when it has one already.
QString WithMnemonic(const QString& text, QString& taken);

}  // namespace zeb
