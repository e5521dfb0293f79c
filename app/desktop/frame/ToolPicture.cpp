#include "app/desktop/frame/ToolPicture.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

namespace zeb {
namespace {

// On a square of 16.
void PaintShape(QPainter& painter, ToolShape shape, const QColor& colour) {
  painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  switch (shape) {
    case ToolShape::kPlus:
      painter.drawLine(QPointF(8, 3), QPointF(8, 13));
      return painter.drawLine(QPointF(3, 8), QPointF(13, 8));
    case ToolShape::kSliders: {
      painter.setBrush(colour);
      double x = 5;
      for (const double y : {4.0, 8.0, 12.0}) {
        painter.drawLine(QPointF(2, y), QPointF(14, y));
        painter.drawEllipse(QPointF(x, y), 1.4, 1.4);
        x = x > 8 ? 6 : 11;
      }
      return;
    }
    case ToolShape::kPencil:
      painter.drawPolygon(QPolygonF({{3, 13}, {4, 9.6}, {10.8, 2.8}, {13.2, 5.2}, {6.4, 12}}));
      return painter.drawLine(QPointF(9.2, 4.4), QPointF(11.6, 6.8));
    case ToolShape::kArrows:
      painter.drawArc(QRectF(3, 3, 10, 10), 60 * 16, 250 * 16);
      painter.setBrush(colour);
      painter.drawPolygon(QPolygonF({{9.5, 1.6}, {12.6, 4.0}, {9.2, 5.6}}));
      return;
  }
}

}  // namespace

QIcon ToolPicture(ToolShape shape, const QPalette& palette) {
  QIcon icon;
  for (const auto mode : {QIcon::Normal, QIcon::Disabled})
    for (const int size : {16, 24, 32, 48}) {
      QPixmap pixmap(size, size);
      pixmap.fill(Qt::transparent);
      QPainter painter(&pixmap);
      painter.setRenderHint(QPainter::Antialiasing);
      painter.scale(size / 16.0, size / 16.0);
      PaintShape(
          painter, shape,
          palette.color(mode == QIcon::Normal ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
      icon.addPixmap(pixmap, mode);
    }
  return icon;
}

}  // namespace zeb
