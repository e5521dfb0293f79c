// GridView: a list of rows as the service window shows it: whole rows are chosen, cells are cut and not
// wrapped, and everything is reached by keys.
#pragma once

#include <QTableView>
#include <functional>
#include <optional>

#include "app/desktop/service/GridModel.h"

namespace zeb {

class GridView : public QTableView {
 public:
  // `name` is for the manual and tests, `accessibleName` for those who hear it. The model outlives the view.
  GridView(GridModel& model, const QString& name, const QString& accessibleName, QWidget* parent = nullptr);

  // Widths of the columns in characters of the view's font; the last one takes what is left.
  void SetWidths(const std::vector<int>& characters);
  // Return or a double click on the chosen row.
  std::function<void()> onOpen;
  // Another row is chosen, or none.
  std::function<void()> onChosen;

  std::optional<std::uint64_t> Chosen() const;
  void Choose(std::uint64_t key);
  void ChooseNone();
  QString SaveColumns() const;
  void RestoreColumns(const QString& saved);  // what does not fit is passed over

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  GridModel& model_;
};

}  // namespace zeb
