// SerialPortControl: a serial port as the field's classic communications control offers it: a port number,
// line settings as text, handshaking, an open flag, output, an output-buffer count and communication events.
//
// Made by SerialPorts, owned by the output that it is handed to. Output never blocks: what the line does not
// take yet is counted by OutBufferCount. Events come on the loop's thread, never from inside a call. Those of
// the line (breaks, errors, changes of its signals) come where the device reports them, within a second, one
// of a kind however many there were; pseudo-terminals and the network have none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Control.h"
#include "platform/Result.h"

namespace zeb {

// The events that the control reports; the codes are those of the classic control.
enum CommEvent : std::int32_t {
  kCommSend = 1,
  kCommReceive = 2,
  kCommCTS = 3,
  kCommDSR = 4,
  kCommCD = 5,
  kCommRing = 6,
  kCommEOF = 7,
  kCommBreak = 1001,
  kCommCTSTimeout = 1002,
  kCommDSRTimeout = 1003,
  kCommFrame = 1004,
  kCommOverrun = 1006,
  kCommCDTimeout = 1007,
  kCommReceiveOverflow = 1008,
  kCommParity = 1009,
  kCommTransmitFull = 1010,
  kCommDCB = 1011
};

// "Framing Error" and so on; "Unknown error or event" for any other code.
std::string_view CommEventText(std::int32_t event);

class SerialPortControl : public Control {
 public:
  enum Handshaking { kNoHandshaking = 0, kXOnXOff = 1, kRtsCts = 2, kRtsXOn = 3 };

  std::function<void(std::int32_t event, std::string_view data)> onComm;  // data: with kCommReceive only
  // The port has gone while it was open: an adapter was pulled out, the encoder on the network closed or
  // broke. LastError says why. Not after Close.
  std::function<void()> onLost;

  // What the next Open uses. `device` is a device name, or "tcp:host:port" for an encoder on the network.
  struct Line {
    std::int32_t commPort = 1;
    std::string device;
    std::string settings = "9600,n,8,1";
    std::int32_t handshaking = kNoHandshaking;
  };
  virtual void SetLine(Line line) = 0;

  // Closes first what is open. A device on the network, or one whose driver takes its time, may still be
  // Opening when this returns a success.
  virtual Outcome Open() = 0;
  virtual void Close() = 0;  // drops what has not gone out
  virtual bool PortOpen() const = 0;
  virtual bool Opening() const { return false; }
  virtual std::string LastError() const = 0;  // why it is no longer open; "" when it was closed on purpose

  virtual Outcome Output(std::string_view bytes) = 0;
  virtual std::size_t OutBufferCount() const = 0;  // bytes that have not left yet
};

class SerialPorts {
 public:
  virtual ~SerialPorts() = default;
  virtual std::shared_ptr<SerialPortControl> MakePort() = 0;

  // The ports that this machine has, for somebody who chooses one. May be called on a worker.
  struct Found {
    std::string device;  // as Line::device
    std::string text;    // what is known of it; may be empty
  };
  virtual std::vector<Found> Available() { return {}; }
};

}  // namespace zeb
