// ItemBody: what is entered by hand, as requests bring it: JSON with the names of `zebctl set`, into the
// messages of a playout system. Names that are not known are a mistake, so that a wrong one is not
// overlooked.
#pragma once

#include <string>
#include <string_view>

#include "dialogs/frmManualZEB.h"
#include "platform/Result.h"

namespace zeb {

// {"title","artist","type","cart","notes"}: "type" is song (unless told otherwise), link, spot, other or a
// number; "cart" a number, also as text.
Result<std::string> ItemMessageOf(std::string_view body, ManualSlot slot);
// The same, and "from": next or coming.
Result<std::string> PromoteMessageOf(std::string_view body);
// {"reference","name"}
Result<std::string> PresenterMessageOf(std::string_view body);
// {"reference","title"}
Result<std::string> ShowMessageOf(std::string_view body);

}  // namespace zeb
