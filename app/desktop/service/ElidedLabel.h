// ElidedLabel: a line of text that takes the room that it gets: what does not fit is cut with dots, and is
// there as a whole in the tool tip and for screen readers.
#pragma once

#include <QLabel>
#include <QPainter>
#include <QStyle>

namespace zeb {

class ElidedLabel : public QLabel {
 public:
  explicit ElidedLabel(const char* name, QWidget* parent = nullptr) : QLabel(parent) {
    setObjectName(QLatin1String(name));
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  }
  // Does nothing when it shows that already.
  void Take(const QString& shown) {
    if (text() == shown) return;
    setText(shown);
    setToolTip(shown.isEmpty() ? QString() : "<p>" + shown.toHtmlEscaped() + "</p>");
  }
  QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    drawFrame(&painter);
    const QRect room = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    style()->drawItemText(&painter, room, static_cast<int>(alignment()), palette(), isEnabled(),
                          fontMetrics().elidedText(text(), Qt::ElideRight, room.width()), foregroundRole());
  }
};

}  // namespace zeb
