// WinSerialPortControl: a serial port of this machine, or an encoder on the network when the device says so.
//
// Whatever may block in a driver, the opening too, is done on a thread of the port's own; so a local port is
// Opening when Open returns a success. A driver that hangs keeps that thread, and the port stays shut until
// it has come back.
#pragma once

#include <memory>

#include "platform/EventLoop.h"
#include "platform/NetworkSerialPort.h"
#include "platform/SerialPortControl.h"
#include "platform/Tcp.h"

namespace zeb {

class WinSerialPortControl : public SerialPortControl {
 public:
  WinSerialPortControl(EventLoop& loop, Network& network);
  ~WinSerialPortControl() override;

  void SetLine(Line line) override;
  Outcome Open() override;
  void Close() override;
  bool PortOpen() const override;
  bool Opening() const override;
  std::string LastError() const override;
  Outcome Output(std::string_view bytes) override;
  std::size_t OutBufferCount() const override;

  // More than this may not wait for the line; Output refuses it.
  static constexpr std::size_t kMostUnsent = 1024 * 1024;

 private:
  struct Session;
  class Thread;
  static void TakeNews(const std::shared_ptr<Session>& session);
  bool Begin(std::shared_ptr<Session> session);

  EventLoop& loop_;
  Line line_;
  std::shared_ptr<Thread> thread_;    // null: there was no need of it yet
  std::shared_ptr<Session> session_;  // null: closed, or on the network
  NetworkSerialPort remote_;
};

class WinSerialPorts : public SerialPorts {
 public:
  WinSerialPorts(EventLoop& loop, Network& network) : loop_(loop), network_(network) {}
  std::shared_ptr<SerialPortControl> MakePort() override {
    return std::make_shared<WinSerialPortControl>(loop_, network_);
  }
  std::vector<Found> Available() override;

 private:
  EventLoop& loop_;
  Network& network_;
};

}  // namespace zeb
