// DialogFrame: what all dialogs of this folder's files, prints and small questions have in common: opened in
// front of the main window and never executed, gone when closed, its buttons in the chosen language below.
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/desktop/Desk.h"

class QFormLayout;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace zeb {

class DialogFrame : public QDialog {
 public:
  // `name` is the dialog's object name; `title` is English, as all texts are.
  DialogFrame(QWidget* parent, const char* name, std::string_view title);

  QVBoxLayout* Contents() const { return contents_; }
  // Buttons stand from left to right in the order of the calls.
  QPushButton* AddButton(const char* name, std::string_view caption, std::function<void()> pressed);
  QPushButton* AddCancel();

  // A label above or beside a field: its buddy, and the field's accessible name. The mnemonic is in
  // `caption`.
  QLabel* Caption(QWidget* field, const char* name, std::string_view caption);

 private:
  QVBoxLayout* contents_;
  QHBoxLayout* buttons_;
};

struct FileQuestion {
  std::string title;
  std::vector<std::string> filters;  // "Settings (*.reg)"
  std::string folder, name;          // to begin with; "": where one was last
  bool toWrite = false;              // a file to be made, else one that is there
  std::string suffix;                // added to a name without one
};
// `chosen` gets the path; nothing is called when none is chosen.
void OpenFileQuestion(QWidget* parent, const FileQuestion& question,
                      std::function<void(const std::string& path)> chosen);

}  // namespace zeb
