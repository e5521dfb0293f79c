#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenManualEntry(Desk&, const ServicePtr&) {}

}  // namespace zeb
