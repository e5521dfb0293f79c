// TagName: what stands between "<" and ">" of a tag, in its parts. Views into the template; knows a service
// only for finding a slot's item.
#pragma once

#include <cstdint>
#include <string_view>

#include "core/ServiceSnapshot.h"

namespace zeb {

inline constexpr std::string_view kTagStart = "<ZEB";
inline constexpr std::string_view kConditionStart = "(<ZEB";
inline constexpr std::string_view kSpecialSlot = "SPECIAL";

struct TagName {
  std::string_view slot;
  std::string_view element;
  std::string_view rest;   // all behind the slot's "_", further "_" included
  std::int32_t index = 0;  // the number behind a third "_"
};

// `name` begins with "ZEB".
TagName SplitTagName(std::string_view name);

// The item that a slot word names by its first three letters (and its number); null when there is none.
const clsZEBItemInfo* ItemOfSlot(const ServiceSnapshot& snapshot, std::string_view slot);
// Whether that is never null.
bool AlwaysHasItem(std::string_view slot);

}  // namespace zeb
