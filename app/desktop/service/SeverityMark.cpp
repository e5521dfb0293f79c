#include "app/desktop/service/SeverityMark.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "app/desktop/text/Translate.h"

namespace zeb {

namespace {

constexpr int kNumberMarks = 5;

// A disc, half a disc, a ring, a triangle with its point up, and a ring with a hand as a clock has it.
void DrawMark(QPainter& painter, int mark, const QRectF& area) {
  QPainterPath shape;
  switch (mark) {
    case static_cast<int>(Severity::kOk):
      shape.addEllipse(area);
      return painter.fillPath(shape, painter.pen().brush());
    case static_cast<int>(Severity::kBusy):
      shape.moveTo(area.center());
      shape.arcTo(area, 90, 180);
      painter.fillPath(shape, painter.pen().brush());
      return painter.drawEllipse(area);
    case static_cast<int>(Severity::kFailing):
      shape.moveTo(area.center().x(), area.top());
      shape.lineTo(area.bottomRight());
      shape.lineTo(area.bottomLeft());
      shape.closeSubpath();
      return painter.fillPath(shape, painter.pen().brush());
    case kOldMark:
      painter.drawLine(area.center(), QPointF(area.center().x(), area.top() + area.height() / 5));
      painter.drawLine(area.center(), QPointF(area.right() - area.width() / 4, area.center().y()));
      return painter.drawEllipse(area);
    default:
      return painter.drawEllipse(area);
  }
}

}  // namespace

std::vector<QIcon> SeverityMarks(const QPalette& palette, int size) {
  constexpr int kScale = 3;  // sharp on scaled screens
  std::vector<QIcon> marks;
  for (int mark = 0; mark < kNumberMarks; ++mark) {
    QPixmap picture(size * kScale, size * kScale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette.color(QPalette::Text), kScale * 1.5));
    const qreal edge = kScale * 2;
    DrawMark(painter, mark, QRectF(picture.rect()).adjusted(edge, edge, -edge, -edge));
    painter.end();
    picture.setDevicePixelRatio(kScale);
    marks.emplace_back(picture);
  }
  return marks;
}

int MarkOf(const OutputState& output) {
  const bool old = output.stale && output.severity == Severity::kOk;
  return old ? kOldMark : static_cast<int>(output.severity);
}

QString StateWord(const OutputState& output) {
  switch (MarkOf(output)) {
    case static_cast<int>(Severity::kOk):
      return T("OK");
    case static_cast<int>(Severity::kBusy):
      return T("Sending");
    case static_cast<int>(Severity::kFailing):
      return T("Failing");
    case kOldMark:
      return T("Older item");
    default:
      return T("Off");
  }
}

}  // namespace zeb
