// SerialOutputDialog: the serial output's property dialog, without the drawing. For the desktop program.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "core/PropertySheet.h"

namespace zeb {

inline constexpr std::array<std::string_view, 4> kHandshakingTexts = {"None", "XOn-XOff", "RTS-CTS",
                                                                      "RTS+XON"};
inline constexpr std::string_view kSlowSendCaption =
    "Deliberately restrict the data rate (usefull for bandwidth sharing)";

class clsZEBSerialOutput;
PropertySheet SerialSheet(clsZEBSerialOutput& draft);

// The message to show instead of closing the dialog; "" when all is well.
std::string CheckSerialProperties(std::string_view commPort, std::string_view settings);

}  // namespace zeb
