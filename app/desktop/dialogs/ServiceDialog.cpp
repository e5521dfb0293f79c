#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenServiceSettings(Desk&, const ServicePtr&) {}

}  // namespace zeb
