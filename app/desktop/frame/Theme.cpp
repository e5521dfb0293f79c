#include "app/desktop/frame/Theme.h"

#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QPolygonF>
#include <QStyle>
#include <QStyleFactory>
#include <QToolTip>
#include <algorithm>
#include <array>
#include <cmath>

#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

struct ThemeWord {
  ThemeChoice choice;
  std::string_view word;
};
constexpr std::array<ThemeWord, 3> kThemes = {
    {{ThemeChoice::kSystem, "System"}, {ThemeChoice::kLight, "Light"}, {ThemeChoice::kDark, "Dark"}}};

// In the order of Severity, then the warning.
struct StatusColours {
  QRgb ok, busy, off, failing, warning;
};
constexpr StatusColours kOnLight = {0xff116329, 0xff0550ae, 0xff4d555e, 0xffa40e26, 0xff7d4e00};
constexpr StatusColours kOnDark = {0xff56d364, 0xff79c0ff, 0xffb1bac4, 0xffff938a, 0xffe3b341};

const StatusColours& ColoursOn(const QPalette& palette) {
  return IsDark(palette) ? kOnDark : kOnLight;
}

QPalette LightPalette() {
  QPalette palette(QColor(0xf3f4f6), QColor(0xf3f4f6));
  const QColor text(0x1c1f23);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
    palette.setColor(role, text);
  palette.setColor(QPalette::Base, Qt::white);
  palette.setColor(QPalette::AlternateBase, QColor(0xf3f4f6));
  palette.setColor(QPalette::ToolTipBase, QColor(0xfffbe6));
  palette.setColor(QPalette::Highlight, QColor(0x0b5cad));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x0550ae));
  palette.setColor(QPalette::PlaceholderText, QColor(0x5c636b));
  return palette;
}

QPalette DarkPalette() {
  QPalette palette(QColor(0x2b2d31), QColor(0x2b2d31));
  const QColor text(0xe8eaed);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                          QPalette::BrightText})
    palette.setColor(role, text);
  palette.setColor(QPalette::Base, QColor(0x1e1f22));
  palette.setColor(QPalette::AlternateBase, QColor(0x26282c));
  palette.setColor(QPalette::ToolTipBase, QColor(0x3a3d42));
  palette.setColor(QPalette::Highlight, QColor(0x1f5fa8));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x79c0ff));
  palette.setColor(QPalette::LinkVisited, QColor(0xd2a8ff));
  palette.setColor(QPalette::PlaceholderText, QColor(0xa3abb4));
  return palette;
}

QPalette WithQuietDisabled(QPalette palette) {
  const QColor quiet = IsDark(palette) ? QColor(0x8a9199) : QColor(0x7a828a);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, quiet);
  return palette;
}

// Relative luminance, as accessibility guidelines define it.
double Luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

}  // namespace

std::string_view WordOf(ThemeChoice choice) {
  return kThemes.at(static_cast<std::size_t>(choice)).word;
}

ThemeChoice ThemeByWord(std::string_view word) {
  for (const ThemeWord& theme : kThemes)
    if (theme.word == word) return theme.choice;
  return ThemeChoice::kSystem;
}

void ApplyTheme(ThemeChoice choice) {
  static const bool systemIsDark = IsDark(QApplication::palette());
  if (QApplication::style()->name() != QLatin1String("fusion"))
    QApplication::setStyle(QStyleFactory::create("Fusion"));
  const bool dark = choice == ThemeChoice::kDark || (choice == ThemeChoice::kSystem && systemIsDark);
  const QPalette palette = WithQuietDisabled(dark ? DarkPalette() : LightPalette());
  QApplication::setPalette(palette);
  QToolTip::setPalette(palette);
}

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Active, QPalette::Window).lightness() < 128;
}

QColor ColourOf(Severity severity, const QPalette& palette) {
  const StatusColours& colours = ColoursOn(palette);
  switch (severity) {
    case Severity::kOk:
      return colours.ok;
    case Severity::kBusy:
      return colours.busy;
    case Severity::kOff:
      return colours.off;
    case Severity::kFailing:
      break;
  }
  return colours.failing;
}

QColor WarningColour(const QPalette& palette) {
  return ColoursOn(palette).warning;
}

double Contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({Luminance(one), Luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QString WordFor(Severity severity) {
  switch (severity) {
    case Severity::kOk:
      return T("OK");
    case Severity::kBusy:
      return T("Sending");
    case Severity::kOff:
      return T("Off");
    case Severity::kFailing:
      break;
  }
  return T("Failing");
}

void PaintMark(QPainter& painter, const QRectF& place, Severity severity, const QColor& colour) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const double size = std::min(place.width(), place.height());
  const double line = std::max(1.5, size / 8);
  QRectF square(0, 0, size - line, size - line);
  square.moveCenter(place.center());
  painter.setPen(QPen(colour, line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(severity == Severity::kOk || severity == Severity::kFailing ? QBrush(colour) : QBrush());
  if (severity == Severity::kFailing) {
    painter.drawPolygon(QPolygonF({{square.center().x(), square.top()},
                                   {square.right(), square.bottom() - line / 2},
                                   {square.left(), square.bottom() - line / 2}}));
  } else {
    painter.drawEllipse(square);
  }
  if (severity == Severity::kBusy) {
    painter.setBrush(colour);
    painter.drawPie(square, 90 * 16, 180 * 16);
  }
  painter.restore();
}

QIcon MarkIcon(Severity severity, const QPalette& palette) {
  QIcon icon;
  for (const int size : {16, 24, 32, 64}) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    PaintMark(painter, QRectF(1, 1, size - 2, size - 2), severity, ColourOf(severity, palette));
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace zeb
