#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void AskRemoveOutput(Desk&, const ServicePtr&, const OutputPtr&) {}

}  // namespace zeb
