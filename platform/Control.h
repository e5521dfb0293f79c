// Control: what an output works through (a TCP client, a serial port, a DAB client).
//
// The service window makes and owns controls and hands one to each output's StartOutput; the output keeps a
// shared reference until StopOutput. An output finds its own kind by dynamic cast.
#pragma once

namespace zeb {

class Control {
 public:
  Control() = default;
  virtual ~Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
};

}  // namespace zeb
