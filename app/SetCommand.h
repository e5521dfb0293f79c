// SetCommand: `zebctl set`: manual entry from a shell. It becomes a message of a playout system, which is
// sent as `zebctl send` sends it.
#pragma once

#include <string>

#include "dialogs/frmManualZEB.h"

namespace zeb {

struct SetOptions {
  enum class What { kItem, kPresenter, kShow };
  What what = What::kItem;
  ManualEntry entry;  // of what is set; a presenter or a show has a reference
};

std::string SetMessage(const SetOptions& options);

}  // namespace zeb
