#include "platform/SerialPortControl.h"

namespace zeb {

std::string_view CommEventText(std::int32_t event) {
  switch (event) {
    case kCommBreak:
      return "Break Received";
    case kCommCTSTimeout:
      return "CTS Timeout";
    case kCommDSRTimeout:
      return "DSR Timeout";
    case kCommFrame:
      return "Framing Error";
    case kCommCDTimeout:
      return "Carrier Detect Timeout";
    case kCommOverrun:
      return "Overrun Error";
    case kCommReceiveOverflow:
      return "Receive Buffer Overflow";
    case kCommParity:
      return "Parity Error";
    case kCommTransmitFull:
      return "Transmit Buffer Full";
    case kCommDCB:
      return "Error retrieving DCB";
    case kCommSend:
      return "Data Sent";
    case kCommReceive:
      return "Data received";
    case kCommCTS:
      return "Change in CTS Detected";
    case kCommDSR:
      return "Change in DSR Detected";
    case kCommCD:
      return "Change in CD Detected";
    case kCommRing:
      return "The Phone is Ringing?";
    case kCommEOF:
      return "End of File Detected";
    default:
      return "Unknown error or event";
  }
}

}  // namespace zeb
