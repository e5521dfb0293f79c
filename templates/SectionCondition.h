// Conditions of optional sections: "(<ZEB_NOW_ITEMTYPE>=Song)" at the start of a section's content.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "core/ServiceSnapshot.h"
#include "templates/TagName.h"

namespace zeb {

struct SectionCondition {
  TagName tag;              // views into the content
  bool wantsEqual = false;  // a missing operator acts as "!="
  std::string operand;      // in capitals
  std::size_t body = 0;     // where the body starts in the content
};

// Nothing: the section has no condition.
std::optional<SectionCondition> ParseSectionCondition(std::string_view content);

// Which part of a section's content (what stands between "[" and "]") stays in the text: the body when the
// condition holds, nothing when it does not, all of it when the condition cannot be evaluated.
enum class ShownPart { kNothing, kBody, kAll };
ShownPart Evaluate(const SectionCondition& condition, const ServiceSnapshot& snapshot);
// Whether there are snapshots for which that is all of it.
bool MayShowAll(const SectionCondition& condition);

}  // namespace zeb
