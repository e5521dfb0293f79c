// PairDialog (frmGetFileParameters): one pair of a source template and what it becomes, of a file output or
// of a web output.
#pragma once

#include <functional>

#include "app/desktop/dialogs/Dialogs.h"
#include "dialogs/FileParametersDialog.h"

namespace zeb {

// `accepted` gets the pair that OK leaves; what was not touched in it is as it was.
void OpenPairDialog(Desk& desk, QWidget* parent, const ServicePtr& window, FileParametersMode mode,
                    const clsFileParameters& pair,
                    std::function<void(const clsFileParameters& pair)> accepted);

}  // namespace zeb
