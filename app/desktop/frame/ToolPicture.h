// ToolPicture: the pictures of the toolbar, drawn in the text's colour, so that they suit light and dark.
#pragma once

#include <QIcon>
#include <QPalette>

namespace zeb {

enum class ToolShape { kPlus, kSliders, kPencil, kArrows };

QIcon ToolPicture(ToolShape shape, const QPalette& palette);

}  // namespace zeb
