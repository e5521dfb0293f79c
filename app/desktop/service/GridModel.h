// GridModel: rows of texts for a grid, taken over from a new picture so that only what differs is told: the
// selection, the place in the list and what is drawn stay.
#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <vector>

namespace zeb {

struct GridCell {
  QString text;
  QString toolTip{};              // "": the text itself
  std::optional<int> progress{};  // percent, drawn as a bar
  bool operator==(const GridCell&) const = default;
};

struct GridRow {
  std::uint64_t key = 0;  // who it is; unique in the grid
  std::vector<GridCell> cells;
  std::optional<int> mark{};  // which of the marks stands before the first cell
  QString accessible{};       // what a screen reader says of the row in its first cell; "": its text
  bool strong = false;        // drawn bold
  bool operator==(const GridRow&) const = default;
};

class GridModel : public QAbstractTableModel {
 public:
  // Of each cell: percent (int), or nothing.
  static constexpr int kProgressRole = Qt::UserRole + 1;

  // Columns by their captions, as they are shown.
  explicit GridModel(QStringList captions, QObject* parent = nullptr);

  // The rows are these now. Rows that are still there keep their places in the view's selection.
  void Take(std::vector<GridRow> rows);
  // Adds at the end and gives up the first ones, so that at most `most` stay.
  void Append(std::vector<GridRow> rows, std::size_t most);
  void SetMarks(std::vector<QIcon> marks);
  const std::vector<GridRow>& Rows() const { return rows_; }
  std::optional<int> RowOf(std::uint64_t key) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  void TellDifferences(int row, const GridRow& before);
  void RemoveMissing(const std::vector<GridRow>& wanted);
  void InsertNew(std::vector<GridRow>& wanted);

  const QStringList captions_;
  std::vector<GridRow> rows_;
  std::vector<QIcon> marks_;
};

}  // namespace zeb
