// How a severity looks: a shape that differs without colour, a word, and a colour for those who see it.
#pragma once

#include <QIcon>
#include <QPalette>
#include <QString>
#include <vector>

#include "status/StationState.h"

namespace zeb {

// The rows' marks in the order of Severity, and one more for an output that shows an older item.
inline constexpr int kOldMark = 4;
std::vector<QIcon> SeverityMarks(const QPalette& palette, int size);
int MarkOf(const OutputState& output);
// "OK", "Sending", "Off", "Failing", "Older item", in the chosen language.
QString StateWord(const OutputState& output);

}  // namespace zeb
