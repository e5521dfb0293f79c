#include "app/desktop/service/GridModel.h"

#include <QFont>
#include <algorithm>
#include <unordered_set>
#include <utility>

namespace zeb {

GridModel::GridModel(QStringList captions, QObject* parent)
    : QAbstractTableModel(parent), captions_(std::move(captions)) {}

// ---- Rows

void GridModel::Take(std::vector<GridRow> rows) {
  RemoveMissing(rows);
  InsertNew(rows);
  const bool sameOrder = std::equal(rows.begin(), rows.end(), rows_.begin(), rows_.end(),
                                    [](const GridRow& a, const GridRow& b) { return a.key == b.key; });
  if (!sameOrder) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
    return;
  }
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (rows_[i] != rows[i]) {
      std::swap(rows_[i], rows[i]);
      TellDifferences(static_cast<int>(i), rows[i]);
    }
}

void GridModel::RemoveMissing(const std::vector<GridRow>& wanted) {
  std::unordered_set<std::uint64_t> keys;
  for (const GridRow& row : wanted) keys.insert(row.key);
  for (std::size_t i = rows_.size(); i-- > 0;)
    if (!keys.contains(rows_[i].key)) {
      beginRemoveRows({}, static_cast<int>(i), static_cast<int>(i));
      rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(i));
      endRemoveRows();
    }
}

void GridModel::InsertNew(std::vector<GridRow>& wanted) {
  std::unordered_set<std::uint64_t> keys;
  for (const GridRow& row : rows_) keys.insert(row.key);
  for (std::size_t i = 0; i < wanted.size(); ++i)
    if (!keys.contains(wanted[i].key)) {
      const std::size_t at = std::min(i, rows_.size());
      beginInsertRows({}, static_cast<int>(at), static_cast<int>(at));
      rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(at), wanted[i]);
      endInsertRows();
    }
}

void GridModel::TellDifferences(int row, const GridRow& before) {
  const GridRow& now = rows_[static_cast<std::size_t>(row)];
  const bool whole = before.mark != now.mark || before.accessible != now.accessible ||
                     before.strong != now.strong || before.cells.size() != now.cells.size();
  int first = whole ? 0 : columnCount(), last = whole ? columnCount() - 1 : -1;
  for (int column = 0; !whole && column < static_cast<int>(now.cells.size()); ++column)
    if (before.cells[static_cast<std::size_t>(column)] != now.cells[static_cast<std::size_t>(column)]) {
      first = std::min(first, column);
      last = column;
    }
  if (first <= last) emit dataChanged(index(row, first), index(row, last));
}

void GridModel::Append(std::vector<GridRow> rows, std::size_t most) {
  if (rows.size() > most) rows.erase(rows.begin(), rows.end() - static_cast<std::ptrdiff_t>(most));
  if (rows.empty()) return;
  const std::size_t all = rows_.size() + rows.size();
  if (all > most) {
    const std::size_t gone = all - most;
    beginRemoveRows({}, 0, static_cast<int>(gone) - 1);
    rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(gone));
    endRemoveRows();
  }
  beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(rows.size()) - 1);
  std::move(rows.begin(), rows.end(), std::back_inserter(rows_));
  endInsertRows();
}

void GridModel::SetMarks(std::vector<QIcon> marks) {
  marks_ = std::move(marks);
  if (!rows_.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole});
}

std::optional<int> GridModel::RowOf(std::uint64_t key) const {
  const auto found =
      std::find_if(rows_.begin(), rows_.end(), [key](const GridRow& row) { return row.key == key; });
  if (found == rows_.end()) return std::nullopt;
  return static_cast<int>(found - rows_.begin());
}

// ---- What the view asks

int GridModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int GridModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(captions_.size());
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const GridRow& row = rows_[static_cast<std::size_t>(index.row())];
  const auto column = static_cast<std::size_t>(index.column());
  if (column >= row.cells.size()) return {};
  const GridCell& cell = row.cells[column];
  switch (role) {
    case Qt::DisplayRole:
      return cell.text;
    case Qt::ToolTipRole:
      // As text: what looks like markup in a title is none.
      return "<p>" +
             (cell.toolTip.isEmpty() ? cell.text : cell.toolTip).toHtmlEscaped().replace('\n', "<br>") +
             "</p>";
    case Qt::AccessibleTextRole:
      return column == 0 && !row.accessible.isEmpty() ? row.accessible : cell.text;
    case Qt::DecorationRole:
      if (column != 0 || !row.mark || static_cast<std::size_t>(*row.mark) >= marks_.size()) return {};
      return marks_[static_cast<std::size_t>(*row.mark)];
    case Qt::FontRole: {
      if (!row.strong) return {};
      QFont bold;
      bold.setBold(true);
      return bold;
    }
    case kProgressRole:
      return cell.progress ? QVariant(*cell.progress) : QVariant();
    default:
      return {};
  }
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return captions_.value(section);
}

}  // namespace zeb
