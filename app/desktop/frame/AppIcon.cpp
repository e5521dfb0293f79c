#include "app/desktop/frame/AppIcon.h"

#include <QPainter>
#include <QPixmap>

#include "app/desktop/frame/Theme.h"

namespace zeb {
namespace {

// As packaging/zeb.svg, on a square of 64.
void PaintIcon(QPainter& painter, double size) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size / 64, size / 64);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0x12, 0x3a, 0x5e));
  painter.drawRoundedRect(QRectF(2, 2, 60, 60), 13, 13);
  painter.setBrush(Qt::NoBrush);
  const QColor wave(0xff, 0xc8, 0x57);
  for (const double radius : {11.0, 19.0}) {
    painter.setPen(QPen(wave, 4, Qt::SolidLine, Qt::RoundCap));
    const QRectF circle(32 - radius, 25 - radius, 2 * radius, 2 * radius);
    painter.drawArc(circle, -40 * 16, 80 * 16);
    painter.drawArc(circle, 140 * 16, 80 * 16);
  }
  painter.setPen(QPen(Qt::white, 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(QPolygonF({{22, 54}, {32, 27}, {42, 54}}));
  painter.drawLine(QPointF(26, 44), QPointF(38, 44));
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  painter.drawEllipse(QPointF(32, 25), 5, 5);
  painter.restore();
}

QIcon Picture(std::optional<Severity> mark) {
  QIcon icon;
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    PaintIcon(painter, size);
    if (mark) {
      // On a plate of its own, whatever the tray's colour is.
      const double side = size * 0.56;
      const QRectF corner(size - side, size - side, side, side);
      painter.setRenderHint(QPainter::Antialiasing);
      painter.setPen(Qt::NoPen);
      painter.setBrush(Qt::white);
      painter.drawRoundedRect(corner, side / 4, side / 4);
      const double edge = side / 7;
      PaintMark(painter, corner.adjusted(edge, edge, -edge, -edge), *mark,
                ColourOf(*mark, QPalette(Qt::white, Qt::white)));
    }
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace

QIcon AppIcon() {
  return Picture(std::nullopt);
}

QIcon TrayPicture(Severity worst) {
  return Picture(worst);
}

}  // namespace zeb
