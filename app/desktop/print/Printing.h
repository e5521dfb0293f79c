// The printed report of a service: its configuration sheet, secrets masked, and the day's play history.
#pragma once

#include <memory>

#include "app/desktop/Desk.h"
#include "app/frmService.h"

namespace zeb {

enum class ReportKind { kConfiguration, kPlayHistory };

void OpenPrint(Desk& desk, const std::shared_ptr<frmService>& window, ReportKind kind);
void OpenPrintPreview(Desk& desk, const std::shared_ptr<frmService>& window, ReportKind kind);

}  // namespace zeb
