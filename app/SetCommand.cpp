#include "app/SetCommand.h"

namespace zeb {

std::string SetMessage(const SetOptions& options) {
  const ManualEntry& entry = options.entry;
  switch (options.what) {
    case SetOptions::What::kPresenter:
      return ManualPresenterMessage(entry.presenterReference, entry.presenterFullName);
    case SetOptions::What::kShow:
      return ManualShowMessage(entry.showReference, entry.showTitle);
    case SetOptions::What::kItem:
      break;
  }
  return ManualItemMessage(entry);
}

}  // namespace zeb
