// Conditions of optional sections: "(<ZEB_NOW_ITEMTYPE>=Song)" at the start of a section's content.
#pragma once

#include <string_view>

#include "core/ServiceSnapshot.h"

namespace zeb {

// The part of a section's content (what stands between "[" and "]") that stays in the text: the body when its
// condition holds, nothing when it does not, all of it when there is no condition that can be evaluated.
std::string_view ShownPart(std::string_view content, const ServiceSnapshot& snapshot);

}  // namespace zeb
