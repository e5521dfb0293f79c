#include "platform/NetworkSerialPort.h"

#include <charconv>
#include <utility>

namespace zeb {

namespace {
constexpr std::string_view kScheme = "tcp:";
}

bool NetworkSerialPort::IsNetworkDevice(std::string_view device) {
  return device.substr(0, kScheme.size()) == kScheme;
}

Outcome NetworkSerialPort::Open() {
  Close();
  const std::string_view address = std::string_view(line_.device).substr(kScheme.size());
  const std::size_t colon = address.rfind(':');
  std::uint16_t port = 0;
  if (colon != std::string_view::npos) {
    const char* end = address.data() + address.size();
    const auto read = std::from_chars(address.data() + colon + 1, end, port);
    if (read.ec != std::errc() || read.ptr != end) port = 0;
  }
  if (port == 0 || colon == 0) return Failure{"'" + line_.device + "' is no device: tcp:host:port is needed"};
  std::string_view host = address.substr(0, colon);
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
  socket_ = network_.MakeClient();
  socket_->onData = [this](std::string_view bytes) {
    if (const auto tell = onComm) tell(kCommReceive, bytes);
  };
  socket_->onConnected = [this] { wasOpen_ = true; };
  socket_->onClosed = [this] {
    if (const auto tell = onLost; std::exchange(wasOpen_, false) && tell) tell();
  };
  socket_->Connect(std::string(host), port);
  return {};
}

void NetworkSerialPort::Close() {
  wasOpen_ = false;
  socket_.reset();
}

bool NetworkSerialPort::PortOpen() const {
  return socket_ && socket_->CurrentState() == TcpClientControl::kConnected;
}

bool NetworkSerialPort::Opening() const {
  if (!socket_) return false;
  const auto state = socket_->CurrentState();
  return state == TcpClientControl::kResolving || state == TcpClientControl::kConnecting;
}

std::string NetworkSerialPort::LastError() const {
  if (!socket_ || PortOpen()) return {};
  if (Opening()) return "no answer from " + line_.device;
  const std::string error = socket_->LastError();
  return error.empty() ? line_.device + " closed the connection" : error;
}

Outcome NetworkSerialPort::Output(std::string_view bytes) {
  if (!PortOpen()) return Failure{"the connection to " + line_.device + " is closed"};
  socket_->SendData(bytes);
  return {};
}

}  // namespace zeb
