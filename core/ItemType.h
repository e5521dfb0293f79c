// What the type codes of items mean. Items keep the number that they came with, since playout systems have
// codes of their own beyond these.
#pragma once

#include <cstdint>

namespace zeb {

inline constexpr std::int32_t kItemTypeCart = 2, kItemTypeJingle = 3, kItemTypeAdvert = 4, kItemTypeSong = 7;
// The same kinds, as some playout systems count them.
inline constexpr std::int32_t kItemTypeCart2 = 12, kItemTypeJingle2 = 13, kItemTypeAdvert2 = 14;

enum class ItemKind { kUnknown, kCart, kJingle, kAdvert, kSong };

constexpr ItemKind KindOfItemType(std::int32_t itemType) {
  switch (itemType) {
    case kItemTypeCart:
    case kItemTypeCart2:
      return ItemKind::kCart;
    case kItemTypeJingle:
    case kItemTypeJingle2:
      return ItemKind::kJingle;
    case kItemTypeAdvert:
    case kItemTypeAdvert2:
      return ItemKind::kAdvert;
    case kItemTypeSong:
      return ItemKind::kSong;
    default:
      return ItemKind::kUnknown;
  }
}

}  // namespace zeb
