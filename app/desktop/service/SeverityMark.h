// How an output's state looks in a grid: the theme's mark and word, and one more of each for an output that
// works and yet shows an older item.
#pragma once

#include <QIcon>
#include <QPalette>
#include <QString>
#include <vector>

#include "status/StationState.h"

namespace zeb {

// In the order of Severity, then that of the older item: a ring with a clock's hands.
std::vector<QIcon> OutputMarks(const QPalette& palette);
inline constexpr int kFailingMark = static_cast<int>(Severity::kFailing), kOldMark = kFailingMark + 1;
int MarkOf(const OutputState& output);
QString StateWord(const OutputState& output);

}  // namespace zeb
