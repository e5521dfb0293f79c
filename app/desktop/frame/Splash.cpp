#include "app/desktop/frame/Splash.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include "app/desktop/frame/AppIcon.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

Splash::Splash()
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      text_(new QLabel(this)),
      action_(new QLabel(this)) {
  setObjectName("Splash");
  setWindowTitle("ZEB");
  setAttribute(Qt::WA_ShowWithoutActivating);
  auto* picture = new QLabel(this);
  picture->setPixmap(AppIcon().pixmap(96, 96));
  auto* name = new QLabel("ZEB", this);
  QFont large = name->font();
  large.setPointSizeF(large.pointSizeF() * 2.4);
  large.setBold(true);
  name->setFont(large);
  auto* version = new QLabel(T("Version %1").arg(ZEB_VERSION), this);
  text_->setObjectName("SplashText");
  action_->setObjectName("SplashAction");
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(28, 24, 36, 24);
  row->setSpacing(24);
  row->addWidget(picture);
  auto* column = new QVBoxLayout();
  row->addLayout(column);
  for (QLabel* label : {name, version, text_, action_}) column->addWidget(label);
  setMinimumWidth(420);
}

void Splash::Tell(const std::string& text, const std::string& action) {
  text_->setText(T(text));
  text_->setVisible(!text.empty());
  action_->setText(T(action));
  adjustSize();
  if (const QScreen* screen = QGuiApplication::primaryScreen())
    move(screen->availableGeometry().center() - rect().center());
  show();
  raise();
}

void Splash::paintEvent(QPaintEvent* event) {
  QWidget::paintEvent(event);
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace zeb
