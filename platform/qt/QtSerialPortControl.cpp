#include "platform/qt/QtSerialPortControl.h"

#include <QSerialPort>
#include <QString>
#include <chrono>
#include <utility>

#include "platform/SerialLineSettings.h"

#ifdef Q_OS_UNIX
#include <sys/ioctl.h>
#include <termios.h>
#endif

namespace zeb {

namespace {

using namespace std::chrono_literals;

// The system says how much it holds, but not when that changes; so while bytes are on their way the loop is
// given something to handle, after which waiting tasks look again.
constexpr Duration kDrainCheck = 2ms;
constexpr qint64 kMaxReadBytes = 64 * 1024;

QSerialPort::Parity ParityOf(char parity) {
  switch (parity) {
    case 'e':
      return QSerialPort::EvenParity;
    case 'o':
      return QSerialPort::OddParity;
    case 'm':
      return QSerialPort::MarkParity;
    case 's':
      return QSerialPort::SpaceParity;
    default:
      return QSerialPort::NoParity;
  }
}

QSerialPort::StopBits StopBitsOf(int timesTwo) {
  if (timesTwo == 3) return QSerialPort::OneAndHalfStop;
  return timesTwo == 4 ? QSerialPort::TwoStop : QSerialPort::OneStop;
}

QSerialPort::FlowControl FlowControlOf(std::int32_t handshaking) {
  switch (handshaking) {
    case SerialPortControl::kXOnXOff:
      return QSerialPort::SoftwareControl;
    case SerialPortControl::kRtsCts:
    case SerialPortControl::kRtsXOn:
      return QSerialPort::HardwareControl;
    default:
      return QSerialPort::NoFlowControl;
  }
}

// RTS/CTS and XON/XOFF together, which the library has no word for.
bool AddSoftwareControl([[maybe_unused]] const QSerialPort& port) {
#ifdef Q_OS_UNIX
  termios mode{};
  if (tcgetattr(port.handle(), &mode) != 0) return false;
  mode.c_iflag |= IXON | IXOFF;
  return tcsetattr(port.handle(), TCSANOW, &mode) == 0;
#else
  return false;
#endif
}

std::size_t SystemQueue([[maybe_unused]] const QSerialPort& port) {
#ifdef Q_OS_UNIX
  int count = 0;
  if (ioctl(port.handle(), TIOCOUTQ, &count) == 0 && count > 0) return static_cast<std::size_t>(count);
#endif
  return 0;
}

// A line whose adapter was pulled out no longer answers, though nothing may have told of it.
bool Answers([[maybe_unused]] const QSerialPort& port) {
#ifdef Q_OS_UNIX
  termios mode{};
  return tcgetattr(port.handle(), &mode) == 0;
#else
  return true;
#endif
}

}  // namespace

struct QtSerialPortControl::Local {
  QSerialPort port;
  Timer drainCheck;

  std::size_t Queued() const { return static_cast<std::size_t>(port.bytesToWrite()) + SystemQueue(port); }
};

QtSerialPortControl::QtSerialPortControl(EventLoop& loop, Network& network) : loop_(loop), remote_(network) {
  remote_.onComm = [this](std::int32_t event, std::string_view data) {
    if (const auto tell = onComm) tell(event, data);
  };
  remote_.onLost = [this] {
    if (const auto tell = onLost) tell();
  };
}

QtSerialPortControl::~QtSerialPortControl() {
  QtSerialPortControl::Close();
}

void QtSerialPortControl::SetLine(Line line) {
  remote_.SetLine(line);
  line_ = std::move(line);
}

Outcome QtSerialPortControl::Open() {
  Close();
  if (NetworkSerialPort::IsNetworkDevice(line_.device)) return remote_.Open();
  const Result<SerialLineSettings> parsed = ParseSerialLineSettings(line_.settings);
  if (!parsed) return Failure{parsed.Reason()};
  const SerialLineSettings& settings = parsed.Value();
  if (line_.handshaking < kNoHandshaking || line_.handshaking > kRtsXOn)
    return Failure{"there is no handshaking " + std::to_string(line_.handshaking)};

  auto local = std::make_unique<Local>();
  QSerialPort& port = local->port;
  port.setPortName(QString::fromStdString(line_.device));
  bool taken = port.setBaudRate(settings.baud) && port.setParity(ParityOf(settings.parity)) &&
               port.setDataBits(static_cast<QSerialPort::DataBits>(settings.dataBits)) &&
               port.setStopBits(StopBitsOf(settings.stopBitsTimesTwo)) &&
               port.setFlowControl(FlowControlOf(line_.handshaking));
  taken = taken && port.open(QIODevice::ReadWrite);
  if (taken && line_.handshaking == kRtsXOn && !AddSoftwareControl(port))
    return Failure{"cannot open '" + line_.device + "': it does not take RTS with XON"};
  if (!taken) return Failure{"cannot open '" + line_.device + "': " + port.errorString().toStdString()};
  port.setReadBufferSize(kMaxReadBytes);
  QObject::connect(&port, &QSerialPort::readyRead, &port, [this] {
    const QByteArray bytes = local_->port.readAll();
    if (const auto tell = onComm)
      tell(kCommReceive, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
  });
  // An adapter that was pulled out: reads fail, or end as a file would, again and again. The port must not be
  // destroyed by its own signal.
  QObject::connect(&port, &QSerialPort::errorOccurred, &port, [this](QSerialPort::SerialPortError error) {
    const bool lost = error == QSerialPort::ResourceError || error == QSerialPort::ReadError ||
                      error == QSerialPort::WriteError;
    if (!local_ || !lost || !lostError_.empty()) return;
    lostError_ = "'" + line_.device + "' is gone: " + local_->port.errorString().toStdString();
    loop_.Post([this, alive = std::weak_ptr<bool>(alive_)] {
      if (alive.expired() || lostError_.empty()) return;
      Drop();
      if (const auto tell = onLost) tell();
    });
  });
  local_ = std::move(local);
  return {};
}

// What is still queued is thrown away first: the system would hold up the close of a line that does not
// drain.
void QtSerialPortControl::Close() {
  remote_.Close();
  lostError_.clear();
  Drop();
}

void QtSerialPortControl::Drop() {
  const std::unique_ptr<Local> local = std::exchange(local_, nullptr);
  if (!local) return;
  local->port.disconnect();
  if (local->port.isOpen()) {
    if (local->Queued() > 0) local->port.clear();
    local->port.close();
  }
}

bool QtSerialPortControl::PortOpen() const {
  return (local_ && lostError_.empty() && local_->port.isOpen() && Answers(local_->port)) ||
         remote_.PortOpen();
}

bool QtSerialPortControl::Opening() const {
  return remote_.Opening();
}

std::string QtSerialPortControl::LastError() const {
  if (!lostError_.empty()) return lostError_;
  return local_ && !PortOpen() ? "'" + line_.device + "' is gone" : remote_.LastError();
}

Outcome QtSerialPortControl::Output(std::string_view bytes) {
  if (!lostError_.empty()) return Failure{lostError_};
  if (!local_) return remote_.Output(bytes);
  const qint64 taken = local_->port.write(bytes.data(), static_cast<qint64>(bytes.size()));
  if (taken != static_cast<qint64>(bytes.size()))
    return Failure{"'" + line_.device + "': " + local_->port.errorString().toStdString()};
  if (!local_->drainCheck.Running())
    local_->drainCheck = loop_.Every(kDrainCheck, [this] {
      if (local_ && local_->Queued() == 0) local_->drainCheck.Stop();
    });
  return {};
}

std::size_t QtSerialPortControl::OutBufferCount() const {
  if (local_) return PortOpen() ? local_->Queued() : 0;
  return remote_.OutBufferCount();
}

}  // namespace zeb
