// PairGrid: the pairs of a file or web output in the output's dialog: the list, and the buttons that add,
// change, remove and move them. Stores nothing; who owns the dialog takes the pairs on its OK.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "app/desktop/dialogs/Dialogs.h"
#include "dialogs/FileParametersDialog.h"

class QPushButton;
class QTableWidget;

namespace zeb {

class PairGrid : public QWidget {
 public:
  // `window` gives the items for the results of templates; null: a sample song.
  PairGrid(Desk& desk, FileParametersMode mode, std::vector<clsFileParameters> pairs,
           ServicePtr window = nullptr);

  std::vector<clsFileParameters> Pairs() const { return pairs_; }
  std::function<void()> onChanged;

 private:
  int Row() const;  // the chosen one; -1: none
  void Add();
  void Edit();
  void Remove();
  void Move(int by);
  void Draw(int choose);
  void Changed(int choose);
  void EnableButtons();

  Desk& desk_;
  const FileParametersMode mode_;
  const ServicePtr window_;
  std::vector<clsFileParameters> pairs_;
  QTableWidget* table_;
  QPushButton *add_, *edit_, *remove_, *up_, *down_;
};

}  // namespace zeb
