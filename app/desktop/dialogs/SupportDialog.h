// SupportDialog: makes a support file in two steps: what it is for, then everything that will be in it, to be
// looked through and ticked off before it is written. Nothing is sent.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/SupportFile.h"
#include "app/desktop/Desk.h"
#include "app/desktop/dialogs/DialogFrame.h"
#include "platform/Epoch.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QTreeWidget;

namespace zeb {

class SupportDialog : public DialogFrame {
 public:
  explicit SupportDialog(Desk& desk);

  static constexpr std::size_t kMostShown = 512 * 1024;  // bytes of one file; the end of a longer one

 private:
  QWidget* MakeQuestions();
  QWidget* MakeLookThrough();
  void Collect();
  void ShowEntries(std::vector<ZipEntry> entries);
  void ShowText();
  void Back();
  void AskWhere();
  void Write(const std::string& path);
  void Working(bool working);
  void Tell(const std::string& text);
  std::vector<ZipEntry> Ticked() const;

  Desk& desk_;
  std::vector<ZipEntry> entries_;
  QStackedWidget* steps_;
  QLineEdit* reference_ = nullptr;
  QPlainTextEdit* reason_ = nullptr;
  QCheckBox* templates_ = nullptr;
  QTreeWidget* tree_ = nullptr;
  QPlainTextEdit* text_ = nullptr;
  QPushButton *back_ = nullptr, *next_ = nullptr, *save_ = nullptr;
  Epoch epoch_;  // ends with the dialog: a task may come back later
};

}  // namespace zeb
