#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenOutputTest(Desk&, const ServicePtr&, const OutputPtr&) {}

}  // namespace zeb
