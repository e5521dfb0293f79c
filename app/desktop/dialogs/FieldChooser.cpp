#include "app/desktop/dialogs/FieldChooser.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <utility>

#include "app/desktop/text/Translate.h"
#include "dialogs/TemplatePreview.h"

namespace zeb {
namespace {

QTreeWidget* FieldList() {
  auto* fields = new QTreeWidget;
  fields->setObjectName("Fields");
  fields->setAccessibleName(T("Fields"));
  fields->setColumnCount(2);
  fields->setHeaderLabels({T("Field"), T("Value")});
  fields->setRootIsDecorated(false);
  fields->setUniformRowHeights(true);
  fields->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  return fields;
}

}  // namespace

FieldChooser::FieldChooser() : slots_(new QComboBox), search_(new QLineEdit), fields_(FieldList()) {
  auto* caption = new QLabel(T("&Field Chooser"));
  caption->setBuddy(slots_);
  slots_->setObjectName("Slot");
  slots_->setAccessibleName(T("Field Chooser"));
  for (const std::string_view name : kBuilderSlotNames) slots_->addItem(T(name));
  search_->setObjectName("Search");
  search_->setAccessibleName(T("Search the fields"));
  search_->setPlaceholderText(T("Search..."));
  search_->setClearButtonEnabled(true);
  auto* add = new QPushButton(T("&Add"));
  add->setObjectName("Add");
  add->setToolTip(T("Ins"));
  add->setAutoDefault(false);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(caption);
  layout->addWidget(slots_);
  layout->addWidget(search_);
  layout->addWidget(fields_);
  layout->addWidget(add);

  connect(slots_, &QComboBox::currentIndexChanged, this, [this] { FillFields(); });
  connect(search_, &QLineEdit::textChanged, this, [this] { Search(); });
  connect(add, &QPushButton::clicked, this, [this] { Add(); });
  connect(fields_, &QTreeWidget::itemDoubleClicked, this, [this] { Add(); });
  // The list would hand the return key on to the dialog's OK.
  for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Insert})
    connect(new QShortcut(key, fields_, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated, this,
            [this] { Add(); });
  FillFields();
}

BuilderSlot FieldChooser::Slot() const {
  return static_cast<BuilderSlot>(slots_->currentIndex());
}

void FieldChooser::SetItems(SnapshotPtr items) {
  items_ = std::move(items);
  ShowValues();
}

void FieldChooser::FillFields() {
  fields_->clear();
  for (const std::string_view field : BuilderFields(Slot()))
    new QTreeWidgetItem(fields_, {QString::fromUtf8(field.data(), static_cast<qsizetype>(field.size()))});
  fields_->setCurrentItem(fields_->topLevelItem(0));
  ShowValues();
  Search();
}

void FieldChooser::ShowValues() {
  if (!items_) return;
  for (int row = 0; row < fields_->topLevelItemCount(); ++row) {
    QTreeWidgetItem* field = fields_->topLevelItem(row);
    const std::string tag = BuilderInsertion(Slot(), field->text(0).toStdString());
    const QString value = tag.empty() ? QString() : QString::fromStdString(PreviewValue(tag, *items_));
    field->setText(1, value);
    field->setToolTip(1, value);
  }
}

void FieldChooser::Search() {
  const QString wanted = search_->text().trimmed();
  QTreeWidgetItem* first = nullptr;
  for (int row = 0; row < fields_->topLevelItemCount(); ++row) {
    QTreeWidgetItem* field = fields_->topLevelItem(row);
    const bool found = field->text(0).contains(wanted, Qt::CaseInsensitive);
    field->setHidden(!found);
    if (found && first == nullptr) first = field;
  }
  if (fields_->currentItem() == nullptr || fields_->currentItem()->isHidden()) fields_->setCurrentItem(first);
}

void FieldChooser::Add() {
  const QTreeWidgetItem* field = fields_->currentItem();
  if (field == nullptr || field->isHidden() || !onAdd) return;
  const std::string insertion = BuilderInsertion(Slot(), field->text(0).toStdString());
  if (!insertion.empty()) onAdd(insertion);
}

}  // namespace zeb
