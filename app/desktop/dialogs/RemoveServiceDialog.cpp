#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenRemoveService(Desk&) {}

}  // namespace zeb
