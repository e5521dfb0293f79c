// What the File menu does with files: settings in and out, and the support file.
#pragma once

#include "app/desktop/Desk.h"

namespace zeb {

// Chooses a .reg file, shows what would change, and takes it over when confirmed.
void OpenImportSettings(Desk& desk);
void OpenExportSettings(Desk& desk);
// Reason and reference, a tree of what will be in it, then the zip.
void OpenSupportFile(Desk& desk);

}  // namespace zeb
