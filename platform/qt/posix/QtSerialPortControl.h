// QtSerialPortControl: a serial port of this machine, or an encoder on the network when the device says so.
#pragma once

#include <memory>

#include "platform/Epoch.h"
#include "platform/EventLoop.h"
#include "platform/NetworkSerialPort.h"
#include "platform/SerialPortControl.h"
#include "platform/Tcp.h"

namespace zeb {

class QtSerialPortControl : public SerialPortControl {
 public:
  QtSerialPortControl(EventLoop& loop, Network& network);
  ~QtSerialPortControl() override;

  void SetLine(Line line) override;
  Outcome Open() override;
  void Close() override;
  bool PortOpen() const override;
  bool Opening() const override;
  std::string LastError() const override;
  Outcome Output(std::string_view bytes) override;
  std::size_t OutBufferCount() const override;

 private:
  struct Local;
  void Drop();
  EventLoop& loop_;
  Line line_;
  std::unique_ptr<Local> local_;  // null: closed, or on the network
  std::string lostError_;         // not empty: the device went away while it was open
  Epoch epoch_;                   // ends with this object
  NetworkSerialPort remote_;
};

class QtSerialPorts : public SerialPorts {
 public:
  QtSerialPorts(EventLoop& loop, Network& network) : loop_(loop), network_(network) {}
  std::shared_ptr<SerialPortControl> MakePort() override {
    return std::make_shared<QtSerialPortControl>(loop_, network_);
  }
  std::vector<Found> Available() override;

 private:
  EventLoop& loop_;
  Network& network_;
};

}  // namespace zeb
