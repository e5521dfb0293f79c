// ListDialog: one of a list is chosen. Deletes itself when it is closed.
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "app/desktop/Desk.h"

namespace zeb {

struct ListQuestion {
  std::string name;     // the list's object name
  std::string title;    // of the window
  std::string caption;  // of the list
  std::vector<QString> lines;
};

// `chosen` gets the line's place, from 0, after the dialog has closed by OK.
void OpenList(Desk& desk, const ListQuestion& question, std::function<void(int)> chosen);

}  // namespace zeb
