#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenOutputProperties(Desk&, const ServicePtr&, const OutputPtr&) {}

}  // namespace zeb
