// frmManualZEB: manual entry without its window: the fields, and the messages that they become.
//
// The messages are those that a playout system sends, so manual entries go the same way as live ones. For the
// desktop program and `zebctl set`.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/ItemType.h"
#include "core/clsZEBService.h"
#include "platform/CartStore.h"

namespace zeb {

enum class ManualSlot { kCurrent, kNext, kPrevious, kComingSoon, kPromoteNext, kPromoteComing };

// The type codes behind the type list: song, link, spot, other, and one more.
inline constexpr std::array<std::int32_t, 5> kManualItemTypes = {kItemTypeSong, kItemTypeJingle,
                                                                 kItemTypeAdvert, kItemTypeCart, 9};

// The lists of the window, in the order of ManualSlot and of the codes.
inline constexpr std::array<std::string_view, 6> kManualSlotTexts = {
    "Current item",
    "Next item",
    "Previous item",
    "Coming soon item",
    "Promote the next item to current",
    "Promote the coming soon item to current"};
inline constexpr std::array<std::string_view, 5> kManualTypeTexts = {"Song", "Link", "Spot", "Other",
                                                                     "No type"};

// By its word (song, link, spot, other) or its code; nothing for any other text.
std::optional<std::int32_t> ManualItemType(std::string_view text);

struct ManualEntry {
  ManualSlot slot = ManualSlot::kCurrent;
  std::int32_t itemType = kManualItemTypes[0];
  std::string itemName, artist, notes;
  std::string cartNumber;  // as typed
  std::string presenterReference, presenterFullName, showReference, showTitle;
};

// The fields as the window opens: presenter and show as the service has them.
ManualEntry OpenManualEntry(const clsZEBService& service);

// Copies into the fields what a cart has: title and artists from the lines that the service names, notes from
// its record. False, and nothing changes, when the number is none or there is no such cart.
bool CopyCart(ManualEntry& entry, CartStore& carts, const ServiceSettings& settings);

std::string ManualItemMessage(const ManualEntry& entry);
std::string ManualPresenterMessage(std::string_view reference, std::string_view fullName);
std::string ManualShowMessage(std::string_view reference, std::string_view title);

// All that the update button sends: the item, then presenter and show when they have a reference.
std::vector<std::string> ManualMessages(const ManualEntry& entry);

}  // namespace zeb
