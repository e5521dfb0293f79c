#include "app/desktop/dialogs/Files.h"

namespace zeb {

void OpenSupportFile(Desk&) {}

}  // namespace zeb
