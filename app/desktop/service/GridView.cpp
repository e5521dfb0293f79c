#include "app/desktop/service/GridView.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace zeb {

namespace {

// Draws a percentage as a bar with its number in it.
class ProgressDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QVariant percent = index.data(GridModel::kProgressRole);
    if (!percent.isValid()) return QStyledItemDelegate::paint(painter, option, index);
    QStyleOptionProgressBar bar;
    bar.initFrom(option.widget);
    bar.rect = option.rect.adjusted(2, 2, -2, -2);
    bar.state = option.state | QStyle::State_Horizontal;
    bar.minimum = 0;
    bar.maximum = 100;
    bar.progress = percent.toInt();
    bar.text = index.data(Qt::DisplayRole).toString();
    bar.textVisible = true;
    bar.textAlignment = Qt::AlignCenter;
    option.widget->style()->drawControl(QStyle::CE_ProgressBar, &bar, painter, option.widget);
  }
};

}  // namespace

GridView::GridView(GridModel& model, const QString& name, const QString& accessibleName, QWidget* parent)
    : QTableView(parent), model_(model) {
  setObjectName(name);
  setAccessibleName(accessibleName);
  setModel(&model);
  setItemDelegate(new ProgressDelegate(this));
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  setContextMenuPolicy(Qt::ActionsContextMenu);
  setTabKeyNavigation(false);  // Tab leaves the grid
  setWordWrap(false);
  setShowGrid(false);
  setAlternatingRowColors(true);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
  horizontalHeader()->setStretchLastSection(true);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  connect(this, &QTableView::doubleClicked, [this] {
    if (onOpen) onOpen();
  });
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, [this] {
    if (onChosen) onChosen();
  });
}

void GridView::SetWidths(const std::vector<int>& characters) {
  for (std::size_t i = 0; i < characters.size(); ++i)
    setColumnWidth(static_cast<int>(i), fontMetrics().averageCharWidth() * characters[i] + 12);
}

std::optional<std::uint64_t> GridView::Chosen() const {
  const QModelIndexList rows = selectionModel()->selectedRows();
  if (rows.empty()) return std::nullopt;
  return model_.Rows()[static_cast<std::size_t>(rows.front().row())].key;
}

void GridView::Choose(std::uint64_t key) {
  if (const auto row = model_.RowOf(key)) setCurrentIndex(model_.index(*row, 0));
}

void GridView::ChooseNone() {
  clearSelection();
  setCurrentIndex({});
}

// Widths with commas between them: people may read and mend it.
QString GridView::SaveColumns() const {
  QStringList widths;
  for (int i = 0; i + 1 < model_.columnCount(); ++i) widths << QString::number(columnWidth(i));
  return widths.join(',');
}

void GridView::RestoreColumns(const QString& saved) {
  constexpr int kLeast = 16, kMost = 4000;
  const QStringList widths = saved.split(',');
  for (int i = 0; i + 1 < model_.columnCount() && i < widths.size(); ++i)
    if (const int width = widths[i].toInt(); width >= kLeast && width <= kMost) setColumnWidth(i, width);
}

void GridView::keyPressEvent(QKeyEvent* event) {
  const bool opens = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (opens && event->modifiers() == Qt::NoModifier && onOpen) return onOpen();
  QTableView::keyPressEvent(event);
}

}  // namespace zeb
