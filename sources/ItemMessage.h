// The item message: one item as blank-separated KEY=value pairs, the text form in which sources send items.
//
// Messages are bytes as they arrived; values are hex-unescaped, then decoded leniently. Parsing is one pass
// over the message.
#pragma once

#include <string>
#include <string_view>

#include "core/clsZEBItemInfo.h"
#include "platform/CartStore.h"
#include "sources/ItemIntake.h"

namespace zeb {

// Reads the message over `item` (which a Promote key first makes a copy of another slot's item, emptying that
// slot through the intake). False when it cannot be read as an item.
bool ParseItemMessage(std::string_view message, ItemIntake& intake, CartStore& carts, clsZEBItemInfo& item);

// The message that gives this item back, every non-empty field in it.
std::string WriteItemMessage(const clsZEBItemInfo& item);

}  // namespace zeb
