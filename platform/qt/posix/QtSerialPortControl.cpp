#include "platform/qt/posix/QtSerialPortControl.h"

#include <QSerialPort>
#include <QSerialPortInfo>
#include <QString>
#include <chrono>
#include <optional>
#include <utility>

#include "platform/SerialLineSettings.h"
#include "platform/SerialLineWatch.h"

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#endif
#ifdef Q_OS_LINUX
#include <linux/serial.h>
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

// A line whose adapter was pulled out no longer answers, though nothing may have said so.
bool Answers([[maybe_unused]] const QSerialPort& port) {
#ifdef Q_OS_UNIX
  termios mode{};
  return tcgetattr(port.handle(), &mode) == 0;
#else
  return true;
#endif
}

#ifdef Q_OS_LINUX

// A descriptor of its own, since a look may hang for longer than the port is open. It neither keeps the line
// to itself nor sets anything.
class LineLook {
 public:
  explicit LineLook(int port) : number_(fcntl(port, F_DUPFD_CLOEXEC, 0)) {}
  ~LineLook() {
    if (number_ >= 0) close(number_);
  }
  LineLook(const LineLook&) = delete;
  LineLook& operator=(const LineLook&) = delete;

  std::optional<SerialLineState> Look() const {
    serial_icounter_struct counts{};
    int lines = 0;
    const bool counted = ioctl(number_, TIOCGICOUNT, &counts) == 0;
    const bool seen = ioctl(number_, TIOCMGET, &lines) == 0;
    if (!counted && !seen) return std::nullopt;
    const auto count = [](int value) { return static_cast<std::uint32_t>(value); };
    SerialLineState state;
    state.breaks = count(counts.brk);
    state.framingErrors = count(counts.frame);
    state.parityErrors = count(counts.parity);
    state.overruns = count(counts.overrun);
    state.bufferOverflows = count(counts.buf_overrun);
    state.rings = count(counts.rng);
    state.ctsChanges = count(counts.cts);
    state.dsrChanges = count(counts.dsr);
    state.carrierChanges = count(counts.dcd);
    state.cts = (lines & TIOCM_CTS) != 0;
    state.dsr = (lines & TIOCM_DSR) != 0;
    state.carrier = (lines & TIOCM_CAR) != 0;
    state.ringing = (lines & TIOCM_RNG) != 0;
    return state;
  }

 private:
  int number_;
};

SerialLineWatch::Look LookAt(const QSerialPort& port) {
  return [look = std::make_shared<const LineLook>(port.handle())] { return look->Look(); };
}

#else

SerialLineWatch::Look LookAt(const QSerialPort&) {
  return [] { return std::nullopt; };
}

#endif

}  // namespace

struct QtSerialPortControl::Local {
  QSerialPort port;
  Timer drainCheck;
  std::optional<SerialLineWatch> watch;

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
  if (!parsed) return parsed.AsFailure();
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
    loop_.Post([this, mark = epoch_.Now()] {
      if (!mark.Holds() || lostError_.empty()) return;
      Drop();
      if (const auto tell = onLost) tell();
    });
  });
  local_ = std::move(local);
  local_->watch.emplace(loop_, LookAt(port), [this](CommEvent event) {
    if (const auto tell = onComm) tell(event, {});
  });
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
  local->watch.reset();
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

std::vector<SerialPorts::Found> QtSerialPorts::Available() {
  std::vector<Found> found;
  for (const QSerialPortInfo& port : QSerialPortInfo::availablePorts())
    found.push_back({port.systemLocation().toStdString(), port.description().toStdString()});
  return found;
}

}  // namespace zeb
