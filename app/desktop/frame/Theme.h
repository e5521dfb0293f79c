// Theme: light and dark, and how a state is shown: a mark with a shape of its own, a word, and a colour that
// can be read on the background (contrast of 4.5 at least). The one home of colours; everything else uses the
// palette. A mark is never told by its colour alone.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPalette>
#include <QRectF>
#include <QString>
#include <string_view>

#include "status/StationState.h"

class QPainter;

namespace zeb {

enum class ThemeChoice { kSystem, kLight, kDark };
// "System", "Light", "Dark": as stored, and as shown once translated.
std::string_view WordOf(ThemeChoice choice);
ThemeChoice ThemeByWord(std::string_view word);  // kSystem for any other word

// For the whole program, at once. System: light or dark, as the desktop's own palette was at the start.
void ApplyTheme(ThemeChoice choice);

bool IsDark(const QPalette& palette);
QColor ColourOf(Severity severity, const QPalette& palette);
QColor WarningColour(const QPalette& palette);            // something to look at, though nothing fails
double Contrast(const QColor& one, const QColor& other);  // from 1 to 21

QString WordFor(Severity severity);  // "OK", "Sending", "Off", "Failing", in the chosen language
// Full circle, half circle, ring, triangle.
void PaintMark(QPainter& painter, const QRectF& place, Severity severity, const QColor& colour);
QIcon MarkIcon(Severity severity, const QPalette& palette);

}  // namespace zeb
