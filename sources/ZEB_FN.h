// ZEB_FN: readers of other playout systems' files: bytes as they stand in the file → items.
//
// Element 0 is the current item, element i the next item i, whose number is i; an element may hold nothing.
// They touch nothing but what they are given and may run on a worker thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/clsZEBItemInfo.h"
#include "platform/Markup.h"
#include "templates/cTextField.h"

namespace zeb {

inline constexpr std::int32_t kSourceDallet50 = 11;
inline constexpr std::int32_t kSourceDallet51 = 12;
inline constexpr std::int32_t kSourceGenericText = 51;

struct SourceItems {
  std::vector<std::optional<clsZEBItemInfo>> items;
  std::size_t dropped = 0;  // items for which there was no slot
};

// A text file of KEY=value lines with one item. `today` becomes the day of an item that has a time.
Result<SourceItems> ReadDallet50(std::string_view bytes, std::int32_t today);

// An XML file with the root element BroadcastMonitor: the first Current, then every Next in order.
Result<SourceItems> ReadDallet51(std::string_view bytes, Markup& markup);

// The columns of a generic text file.
struct GenericFields {
  std::optional<cTextField> title, artist, type, status, cart, length;
};
// From the section ZEBSource of Generic.ini; fails when that defines no field.
Result<GenericFields> ReadGenericFields(std::string_view iniBytes, Markup* markup);
// One item a line. The fields are a copy, since a field remembers where it found its last value.
Result<SourceItems> ReadGenericText(std::string_view bytes, GenericFields fields);

}  // namespace zeb
