// The line settings text of a serial port: "baud,parity,data bits,stop bits".
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/Result.h"

namespace zeb {

struct SerialLineSettings {
  std::int32_t baud = 9600;
  char parity = 'n';         // n none, e even, o odd, m mark, s space
  int dataBits = 8;          // 5 to 8
  int stopBitsTimesTwo = 2;  // 2, 3 (one and a half) or 4
};

// "9600,n,8,1"; blanks around the parts and capitals are taken. The reason names the text and its bad part.
Result<SerialLineSettings> ParseSerialLineSettings(std::string_view text);

}  // namespace zeb
