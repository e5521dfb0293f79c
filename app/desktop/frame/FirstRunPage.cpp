#include "app/desktop/frame/FirstRunPage.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/desktop/frame/AppIcon.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

FirstRunPage::FirstRunPage(QWidget* parent, bool demo) : QWidget(parent) {
  setObjectName("FirstRun");
  auto* column = new QVBoxLayout(this);
  column->setAlignment(Qt::AlignCenter);
  column->setSpacing(12);
  auto* picture = new QLabel(this);
  picture->setPixmap(AppIcon().pixmap(96, 96));
  picture->setAlignment(Qt::AlignCenter);
  auto* title = new QLabel(T("Add your first service"), this);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.6);
  large.setBold(true);
  title->setFont(large);
  title->setAlignment(Qt::AlignCenter);
  auto* text = new QLabel(T("A service is one station: where its information comes from, and the outputs "
                            "that show it.\nNothing is published before you have added one."),
                          this);
  text->setAlignment(Qt::AlignCenter);
  for (QWidget* widget : {picture, title, text}) column->addWidget(widget, 0, Qt::AlignCenter);
  const auto button = [&](const char* name, const QString& caption, const std::function<void()>& chosen) {
    auto* made = new QPushButton(caption, this);
    made->setObjectName(name);
    made->setMinimumWidth(260);
    column->addWidget(made, 0, Qt::AlignCenter);
    QObject::connect(made, &QPushButton::clicked, this, [&chosen] {
      if (chosen) chosen();
    });
    return made;
  };
  button("FirstAdd", T("Add &Service..."), onAdd)->setDefault(true);
  if (demo) button("FirstDemo", T("Set up the &demo station"), onDemo);
  button("FirstImport", T("&Import settings..."), onImport);
  button("FirstManual", T("Read the &Manual"), onManual);
}

}  // namespace zeb
