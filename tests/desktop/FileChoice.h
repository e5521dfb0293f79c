// What a person does with the dialog that asks for a file.
#pragma once

#include <QApplication>
#include <QFileDialog>
#include <string>

namespace zeb {

inline QFileDialog* OpenFileDialog() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (auto* dialog = dynamic_cast<QFileDialog*>(widget); dialog != nullptr && dialog->isVisible())
      return dialog;
  return nullptr;
}

// As if `path` had been chosen; the machine's own files are not looked at. False: the dialog is not open.
inline bool ChooseFile(const std::string& path) {
  QFileDialog* dialog = OpenFileDialog();
  if (dialog == nullptr) return false;
  emit dialog->fileSelected(QString::fromStdString(path));
  dialog->close();
  return true;
}

}  // namespace zeb
