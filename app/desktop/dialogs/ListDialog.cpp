#include "app/desktop/dialogs/ListDialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "app/desktop/dialogs/PropertyDialog.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

void OpenList(Desk& desk, const ListQuestion& question, std::function<void(int)> chosen) {
  auto* dialog = new QDialog(desk.frame);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(T(question.title));
  auto* list = new QListWidget;
  list->setObjectName(QString::fromStdString(question.name));
  list->setAccessibleName(T(PlainCaption(question.caption)));
  for (const QString& line : question.lines) list->addItem(line);
  list->setCurrentRow(0);
  list->setMinimumWidth(list->sizeHintForColumn(0) + 40);
  list->setMinimumHeight(list->fontMetrics().lineSpacing() * 9);
  QString letters;
  auto* label = new QLabel(WithMnemonic(T(question.caption), letters));
  label->setBuddy(list);
  auto* ok = new QPushButton(T("OK"));
  ok->setDefault(true);
  ok->setEnabled(list->count() > 0);
  auto* cancel = new QPushButton(T("Cancel"));
  cancel->setAutoDefault(false);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  auto* whole = new QVBoxLayout(dialog);
  whole->addWidget(label);
  whole->addWidget(list);
  whole->addLayout(buttons);
  QObject::connect(ok, &QPushButton::clicked, dialog, [dialog] { dialog->accept(); });
  QObject::connect(cancel, &QPushButton::clicked, dialog, [dialog] { dialog->reject(); });
  QObject::connect(list, &QListWidget::itemDoubleClicked, ok, [ok] { ok->click(); });
  QObject::connect(dialog, &QDialog::accepted, dialog,
                   [list, chosen = std::move(chosen)] { chosen(list->currentRow()); });
  dialog->open();
}

}  // namespace zeb
