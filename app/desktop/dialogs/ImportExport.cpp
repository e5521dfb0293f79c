#include "app/desktop/dialogs/Files.h"

namespace zeb {

void OpenImportSettings(Desk&) {}
void OpenExportSettings(Desk&) {}

}  // namespace zeb
