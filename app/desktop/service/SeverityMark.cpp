#include "app/desktop/service/SeverityMark.h"

#include <QPainter>
#include <QPixmap>

#include "app/desktop/frame/Theme.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

namespace {

constexpr int kSize = 32;

void PaintOld(QPainter& painter, const QRectF& place, const QColor& colour) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(colour, kSize / 8.0, Qt::SolidLine, Qt::RoundCap));
  const QRectF ring = place.adjusted(2, 2, -2, -2);
  painter.drawEllipse(ring);
  painter.drawLine(ring.center(), QPointF(ring.center().x(), ring.top() + 6));
  painter.drawLine(ring.center(), QPointF(ring.right() - 8, ring.center().y()));
}

void PaintOutputMark(QPainter& painter, int mark, const QColor& colour) {
  const QRectF place(1, 1, kSize - 2, kSize - 2);
  if (mark == kOldMark) return PaintOld(painter, place, colour);
  PaintMark(painter, place, static_cast<Severity>(mark), colour);
}

// On a chosen row only the text's own colour can be read.
QIcon OutputMark(int mark, const QPalette& palette) {
  const QColor usual =
      mark == kOldMark ? WarningColour(palette) : ColourOf(static_cast<Severity>(mark), palette);
  QIcon icon;
  for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Selected}) {
    QPixmap picture(kSize, kSize);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    PaintOutputMark(painter, mark, mode == QIcon::Normal ? usual : palette.color(QPalette::HighlightedText));
    painter.end();
    icon.addPixmap(picture, mode);
  }
  return icon;
}

}  // namespace

std::vector<QIcon> OutputMarks(const QPalette& palette) {
  std::vector<QIcon> marks;
  for (int mark = 0; mark <= kOldMark; ++mark) marks.push_back(OutputMark(mark, palette));
  return marks;
}

int MarkOf(const OutputState& output) {
  const bool old = output.stale && output.severity == Severity::kOk;
  return old ? kOldMark : static_cast<int>(output.severity);
}

QString StateWord(const OutputState& output) {
  return MarkOf(output) == kOldMark ? T("Older item") : WordFor(output.severity);
}

}  // namespace zeb
