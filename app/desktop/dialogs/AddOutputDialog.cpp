#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenAddOutput(Desk&, const ServicePtr&) {}

}  // namespace zeb
