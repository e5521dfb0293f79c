// WholeTree: what holds for every window, whatever is in it: nothing is clipped, no letter leads to two
// fields, every input has a name for those who cannot see it, Tab goes as one reads, text can be read.
#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

namespace zeb {

// A line for each thing that is wrong with a window that is shown.
std::vector<std::string> WholeTreeProblems(const QWidget& window);

// Opens the window by `open` with texts of 100, 150 and 200 %, checks it and closes it. `open` gives the
// window, shown.
void ExpectWholeTree(const std::function<QWidget*()>& open);

}  // namespace zeb
