#include "app/desktop/dialogs/PairGrid.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/desktop/dialogs/PairDialog.h"
#include "app/desktop/text/Translate.h"
#include "dialogs/WebOutputDialog.h"

namespace zeb {
namespace {

QPushButton* Button(const char* name, std::string_view caption) {
  auto* button = new QPushButton(T(caption));
  button->setObjectName(name);
  button->setAutoDefault(false);  // the return key is the dialog's
  return button;
}

QTableWidget* Table() {
  auto* table = new QTableWidget(0, 3);
  table->setObjectName("Pairs");
  table->setAccessibleName(T("Files"));
  table->setHorizontalHeaderLabels({T("Source"), T("Destination"), T("Update?")});
  table->verticalHeader()->hide();
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->setSelectionMode(QAbstractItemView::SingleSelection);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setTabKeyNavigation(false);
  table->setTextElideMode(Qt::ElideLeft);  // the end of a path tells more than its beginning
  table->setWordWrap(false);
  QHeaderView* header = table->horizontalHeader();
  header->setSectionResizeMode(0, QHeaderView::Stretch);
  header->setSectionResizeMode(1, QHeaderView::Stretch);
  header->setSectionResizeMode(2, QHeaderView::ResizeToContents);
  return table;
}

}  // namespace

PairGrid::PairGrid(Desk& desk, FileParametersMode mode, std::vector<clsFileParameters> pairs,
                   ServicePtr window)
    : desk_(desk),
      mode_(mode),
      window_(std::move(window)),
      pairs_(std::move(pairs)),
      table_(Table()),
      add_(Button("AddPair", "Add...")),
      edit_(Button("EditPair", "Edit...")),
      remove_(Button("RemovePair", "Remove")),
      up_(Button("MovePairUp", "Move Up")),
      down_(Button("MovePairDown", "Move Down")) {
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* buttons = new QVBoxLayout;
  for (QPushButton* button : {add_, edit_, remove_, up_, down_}) buttons->addWidget(button);
  buttons->addStretch();
  layout->addWidget(table_, 0, 0);
  layout->addLayout(buttons, 0, 1);
  setFocusProxy(table_);

  connect(add_, &QPushButton::clicked, this, [this] { Add(); });
  connect(edit_, &QPushButton::clicked, this, [this] { Edit(); });
  connect(remove_, &QPushButton::clicked, this, [this] { Remove(); });
  connect(up_, &QPushButton::clicked, this, [this] { Move(-1); });
  connect(down_, &QPushButton::clicked, this, [this] { Move(1); });
  connect(table_, &QTableWidget::cellDoubleClicked, this, [this] { Edit(); });
  connect(table_, &QTableWidget::itemSelectionChanged, this, [this] { EnableButtons(); });
  const auto key = [this](const QKeySequence& keys, auto work) {
    connect(new QShortcut(keys, table_, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated, this,
            work);
  };
  key(Qt::Key_Return, [this] { Edit(); });
  key(Qt::Key_Enter, [this] { Edit(); });
  key(Qt::Key_Insert, [this] { Add(); });
  key(Qt::Key_Delete, [this] { Remove(); });
  key(Qt::ALT | Qt::Key_Up, [this] { Move(-1); });
  key(Qt::ALT | Qt::Key_Down, [this] { Move(1); });
  Draw(pairs_.empty() ? -1 : 0);
}

int PairGrid::Row() const {
  const QModelIndexList rows = table_->selectionModel()->selectedRows();
  return rows.isEmpty() ? -1 : rows.front().row();
}

void PairGrid::Add() {
  if (pairs_.size() >= static_cast<std::size_t>(kMaxPairs)) return;
  OpenPairDialog(desk_, window(), window_, mode_, {}, [self = QPointer(this)](const clsFileParameters& pair) {
    if (!self) return;
    self->pairs_.push_back(pair);
    self->Changed(static_cast<int>(self->pairs_.size()) - 1);
  });
}

// The pair's dialog is in front of this one, so the row stays what it is.
void PairGrid::Edit() {
  const int row = Row();
  if (row < 0) return;
  OpenPairDialog(desk_, window(), window_, mode_, pairs_[static_cast<std::size_t>(row)],
                 [self = QPointer(this), row](const clsFileParameters& pair) {
                   if (!self || static_cast<std::size_t>(row) >= self->pairs_.size()) return;
                   self->pairs_[static_cast<std::size_t>(row)] = pair;
                   self->Changed(row);
                 });
}

void PairGrid::Remove() {
  const int row = Row();
  if (row < 0) return;
  pairs_.erase(pairs_.begin() + row);
  Changed(std::min(row, static_cast<int>(pairs_.size()) - 1));
}

void PairGrid::Move(int by) {
  const int row = Row(), to = row + by;
  if (row < 0 || to < 0 || to >= static_cast<int>(pairs_.size())) return;
  std::swap(pairs_[static_cast<std::size_t>(row)], pairs_[static_cast<std::size_t>(to)]);
  Changed(to);
}

void PairGrid::Changed(int choose) {
  Draw(choose);
  if (onChanged) onChanged();
}

void PairGrid::Draw(int choose) {
  table_->setRowCount(static_cast<int>(pairs_.size()));
  for (int row = 0; row < table_->rowCount(); ++row) {
    const clsFileParameters& pair = pairs_[static_cast<std::size_t>(row)];
    const std::string rules = UpdateRulesSummary(pair);
    const QString cells[] = {QString::fromStdString(pair.SourceFileName()),
                             QString::fromStdString(pair.DestinationFileName()), T(rules)};
    for (int column = 0; column < 3; ++column) {
      auto* item = new QTableWidgetItem(cells[column]);
      item->setToolTip(cells[column]);
      table_->setItem(row, column, item);
    }
  }
  if (choose >= 0)
    table_->selectRow(choose);
  else
    table_->clearSelection();
  EnableButtons();
}

void PairGrid::EnableButtons() {
  const int row = Row();
  add_->setEnabled(pairs_.size() < static_cast<std::size_t>(kMaxPairs));
  edit_->setEnabled(row >= 0);
  remove_->setEnabled(row >= 0);
  up_->setEnabled(row > 0);
  down_->setEnabled(row >= 0 && row + 1 < static_cast<int>(pairs_.size()));
}

}  // namespace zeb
