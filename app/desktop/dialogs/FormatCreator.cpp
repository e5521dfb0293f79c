#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

void OpenFormatCreator(Desk&, QWidget*, const ServicePtr&, const std::string&,
                       std::function<void(const std::string&)>) {}

}  // namespace zeb
