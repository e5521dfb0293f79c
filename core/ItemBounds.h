// ItemBounds: how long the texts of an item may be, whatever it came from. An item is held in a slot for
// hours, copied into every snapshot and put into every page, so that no single text may be of any size.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/clsZEBItemInfo.h"

namespace zeb {

inline constexpr std::size_t kMaxFieldBytes = 64u * 1024;  // of UTF-8

// A text that was longer.
struct Excess {
  std::string_view field;
  std::size_t bytes = 0;  // that it had
};

// Cuts the text behind the last whole character that fits; its length before, or 0 when it fits.
std::size_t CutToBound(std::string& text, std::size_t most = kMaxFieldBytes);
// Cuts each text of the item, and says which were too long. An item within its bounds is not touched.
std::vector<Excess> CutToBounds(clsZEBItemInfo& item);

// "ItemName has 70000 bytes and is cut to 65536", and how many more there are; "" without any.
std::string ExcessText(const std::vector<Excess>& excesses);

}  // namespace zeb
