// Texts of the station as a window shows them: in one line, bounded, and without characters that steer how
// the text around them is laid out.
#pragma once

#include <QString>
#include <optional>
#include <string_view>

#include "core/clsZEBItemInfo.h"
#include "platform/Time.h"

namespace zeb {

// A title may be as long as its sender likes; a cell is not.
inline constexpr std::size_t kMostCellCharacters = 300, kMostToolTipCharacters = 4000;

// Control characters become blanks; characters that turn the direction of writing are left out.
QString CellText(std::string_view text, std::size_t mostCharacters = kMostCellCharacters);
// The same, with its lines.
QString LinesText(std::string_view text, std::size_t mostCharacters = kMostToolTipCharacters);

// "Waterloo — ABBA"; "" for an item that holds nothing.
QString TitleAndArtists(const clsZEBItemInfo& item);
// Of the item, else of the music in it: "2:46"; "" when neither is known.
QString ItemLengthText(const clsZEBItemInfo& item);
// "12:03:10".
QString ClockText(WallTime moment);
// "2:46", "1:02:03"; "" for none.
QString LengthText(float seconds);
// "12 ms", "1.5 s", "2 min".
QString TookText(Duration time);

}  // namespace zeb
