#include "app/desktop/print/Printing.h"

namespace zeb {

void OpenPrint(Desk&, const std::shared_ptr<frmService>&, ReportKind) {}
void OpenPrintPreview(Desk&, const std::shared_ptr<frmService>&, ReportKind) {}

}  // namespace zeb
