#include "app/desktop/dialogs/PairDialog.h"

namespace zeb {

void OpenPairDialog(Desk&, QWidget*, const ServicePtr&, FileParametersMode, const clsFileParameters&,
                    std::function<void(const clsFileParameters&)>) {}

}  // namespace zeb
