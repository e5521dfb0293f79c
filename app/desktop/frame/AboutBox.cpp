#include "app/desktop/frame/AboutBox.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/desktop/Desk.h"
#include "app/desktop/frame/AppIcon.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

void OpenAboutBox(const Desk& desk, QWidget* parent) {
  auto* box = new QDialog(parent);
  box->setObjectName("About");
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setWindowTitle(T("About ZEB"));
  auto* picture = new QLabel(box);
  picture->setPixmap(AppIcon().pixmap(72, 72));
  auto* name = new QLabel("ZEB", box);
  QFont large = name->font();
  large.setPointSizeF(large.pointSizeF() * 1.8);
  large.setBold(true);
  name->setFont(large);
  auto* text = new QLabel(box);
  text->setTextFormat(Qt::PlainText);
  text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text->setText(T("Version %1").arg(ZEB_VERSION) + "\n" +
                T("Publishes a station's now-playing information.") + "\n\n" +
                T("Data folder: %1").arg(QString::fromStdString(desk.environment.dataFolder)) + "\n" +
                T("Qt %1").arg(qVersion()));
  auto* buttons = new QDialogButtonBox(box);
  QPushButton* close = buttons->addButton(T("OK"), QDialogButtonBox::AcceptRole);
  close->setDefault(true);
  QObject::connect(buttons, &QDialogButtonBox::accepted, box, &QDialog::accept);
  auto* column = new QVBoxLayout(box);
  column->setSizeConstraint(QLayout::SetFixedSize);
  for (QWidget* widget : {picture, name, text}) column->addWidget(widget);
  column->addWidget(buttons);
  close->setFocus();
  box->open();
}

}  // namespace zeb
