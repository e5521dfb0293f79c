// AppIcon: the program's own picture, drawn here: a mast that sends, on a rounded square. The tray's picture
// has the mark of the worst state in its corner.
#pragma once

#include <QIcon>
#include <optional>

#include "status/StationState.h"

namespace zeb {

QIcon AppIcon();
QIcon TrayPicture(Severity worst);

}  // namespace zeb
