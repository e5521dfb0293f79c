#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenOptions(Desk&) {}

}  // namespace zeb
