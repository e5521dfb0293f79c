// NetworkSerialPort: a "serial port" that is an encoder on the network: a device "tcp:host:port". Line
// settings and handshaking mean nothing there.
#pragma once

#include "platform/SerialPortControl.h"
#include "platform/Tcp.h"

namespace zeb {

class NetworkSerialPort : public SerialPortControl {
 public:
  explicit NetworkSerialPort(Network& network) : network_(network) {}

  static bool IsNetworkDevice(std::string_view device);

  void SetLine(Line line) override { line_ = std::move(line); }
  Outcome Open() override;
  void Close() override;
  bool PortOpen() const override;
  bool Opening() const override;
  std::string LastError() const override;
  Outcome Output(std::string_view bytes) override;
  std::size_t OutBufferCount() const override { return PortOpen() ? socket_->UnsentBytes() : 0; }

 private:
  Network& network_;
  Line line_;
  std::shared_ptr<TcpClientControl> socket_;  // null: closed on purpose
  bool wasOpen_ = false;
};

}  // namespace zeb
