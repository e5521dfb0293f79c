// SetCommand: `zebctl set`: manual entry from a shell: a request to the publisher of this machine, or a
// message of a playout system, sent as `zebctl send` sends it.
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

// The same for a publisher's local socket: what is asked of service `number`, and the JSON that goes with it.
struct SetRequest {
  std::string target, body;
};
SetRequest SetRequestOf(const SetOptions& options, int number);

}  // namespace zeb
