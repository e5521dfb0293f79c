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

// The value of one parameter in a command's arguments: found without regard to case at the start or after a
// blank; in double quotes it runs to the next double quote (or the end), else to the next blank. Its escapes
// are undone and it is decoded. "" when absent.
std::string ParameterValue(std::string_view arguments, std::string_view key);

// Reads the message over `item` (which a Promote key first makes a copy of another slot's item, emptying that
// slot through the intake). False when it cannot be read as an item.
bool ParseItemMessage(std::string_view message, ItemIntake& intake, CartStore& carts, clsZEBItemInfo& item);

// The message that gives this item back, every non-empty field in it.
std::string WriteItemMessage(const clsZEBItemInfo& item);

}  // namespace zeb
