// SimulatedSerialPort: a serial port in memory, with failures on request, and the factory that makes them.
#pragma once

#include <string>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/SerialPortControl.h"

namespace zeb {

class SimulatedSerialPort : public SerialPortControl {
 public:
  explicit SimulatedSerialPort(EventLoop& loop) : loop_(loop) {}

  void SetLine(Line newLine) override { line = std::move(newLine); }
  Outcome Open() override;
  void Close() override;
  bool PortOpen() const override { return open_; }
  std::string LastError() const override { return error_; }
  Outcome Output(std::string_view bytes) override;
  std::size_t OutBufferCount() const override { return queued_; }

  // An adapter that is pulled out: the port closes, and opening fails until it is plugged in.
  void Unplug();
  void PlugIn() { openFailure.clear(); }

  struct Written {
    MonotonicTime time;
    std::string bytes;
  };
  Line line;
  std::string openFailure, outputFailure;  // not empty: the reason why it fails
  bool stuck = false;                      // nothing leaves the buffer
  Duration byteTime{};                     // how long the line takes for a byte
  std::vector<Written> written;
  std::string all;  // every byte so far
  int opened = 0;   // times

 private:
  EventLoop& loop_;
  bool open_ = false;
  std::string error_;
  std::size_t queued_ = 0;
  Timer drain_;
};

class SimulatedSerialPorts : public SerialPorts {
 public:
  explicit SimulatedSerialPorts(EventLoop& loop) : loop_(loop) {}
  std::shared_ptr<SerialPortControl> MakePort() override {
    made.push_back(std::make_shared<SimulatedSerialPort>(loop_));
    return made.back();
  }
  std::vector<std::shared_ptr<SimulatedSerialPort>> made;

 private:
  EventLoop& loop_;
};

}  // namespace zeb
