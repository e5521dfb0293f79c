#include "platform/windows/SerialLine.h"

#include <algorithm>
#include <utility>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"

namespace zeb {
namespace {

constexpr ULONGLONG kLookInterval = 500;  // milliseconds
constexpr DWORD kDrainInterval = 10;
constexpr int kHeldLooks = 3;
constexpr DWORD kQueueBytes = 16 * 1024;
constexpr char kXOn = 0x11, kXOff = 0x13;
constexpr DWORD kSignalEvents = EV_CTS | EV_DSR | EV_RLSD | EV_RING | EV_BREAK | EV_ERR;

// The system knows COM10 and later by this name only.
std::wstring DevicePath(const std::string& device) {
  const bool whole = device.rfind("\\\\", 0) == 0;
  return Wide(whole ? device : "\\\\.\\" + device);
}

std::string WhyNotOpened(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return "this computer has no such port";
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
      return "another program uses it";
    default:
      return SystemErrorText(error);
  }
}

BYTE ParityOf(char parity) {
  switch (parity) {
    case 'e':
      return EVENPARITY;
    case 'o':
      return ODDPARITY;
    case 'm':
      return MARKPARITY;
    case 's':
      return SPACEPARITY;
    default:
      return NOPARITY;
  }
}

BYTE StopBitsOf(int timesTwo) {
  if (timesTwo == 3) return ONE5STOPBITS;
  return timesTwo == 4 ? TWOSTOPBITS : ONESTOPBIT;
}

}  // namespace

void ConfigureLine(DCB& line, const SerialLineSettings& settings, std::int32_t handshaking) {
  using Port = SerialPortControl;
  const bool hardware = handshaking == Port::kRtsCts || handshaking == Port::kRtsXOn;
  const bool software = handshaking == Port::kXOnXOff || handshaking == Port::kRtsXOn;
  line.BaudRate = static_cast<DWORD>(settings.baud);
  line.fBinary = TRUE;
  line.fParity = settings.parity != 'n';
  line.Parity = ParityOf(settings.parity);
  line.ByteSize = static_cast<BYTE>(settings.dataBits);
  line.StopBits = StopBitsOf(settings.stopBitsTimesTwo);
  line.fOutxCtsFlow = hardware;
  line.fRtsControl = hardware ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
  line.fDtrControl = DTR_CONTROL_ENABLE;
  line.fOutxDsrFlow = line.fDsrSensitivity = FALSE;
  line.fOutX = line.fInX = software;
  line.fTXContinueOnXoff = TRUE;
  line.XonChar = kXOn;
  line.XoffChar = kXOff;
  // An error is told of, and reading goes on.
  line.fAbortOnError = line.fErrorChar = line.fNull = FALSE;
}

void CountLineEvents(SerialLineState& state, DWORD changes, DWORD errors) {
  const auto count = [](std::uint32_t& counter, bool happened) { counter += happened ? 1 : 0; };
  count(state.breaks, (errors & CE_BREAK) != 0 || (changes & EV_BREAK) != 0);
  count(state.framingErrors, (errors & CE_FRAME) != 0);
  count(state.parityErrors, (errors & CE_RXPARITY) != 0);
  count(state.overruns, (errors & CE_OVERRUN) != 0);
  count(state.bufferOverflows, (errors & CE_RXOVER) != 0);
  count(state.rings, (changes & EV_RING) != 0);
  count(state.ctsChanges, (changes & EV_CTS) != 0);
  count(state.dsrChanges, (changes & EV_DSR) != 0);
  count(state.carrierChanges, (changes & EV_RLSD) != 0);
}

std::optional<std::size_t> OverlappedCall::End(HANDLE file) {
  DWORD bytes = 0;
  const bool ended = GetOverlappedResult(file, &overlapped_, &bytes, TRUE) != 0;
  underWay_ = false;
  return ended ? std::optional<std::size_t>(bytes) : std::nullopt;
}

// What is still queued is thrown away first: the system would hold up the close of a line that does not
// drain. The calls' buffers are ours, so their end is waited for.
SerialLine::~SerialLine() {
  if (!port_.IsOpen()) return;
  SetCommMask(port_.Get(), 0);
  CancelIoEx(port_.Get(), nullptr);
  PurgeComm(port_.Get(), PURGE_TXABORT | PURGE_RXABORT | PURGE_TXCLEAR | PURGE_RXCLEAR);
  for (OverlappedCall* call : {&read_, &write_, &watch_})
    if (call->UnderWay()) call->End(port_.Get());
}

Outcome SerialLine::Open() {
  port_ = WinHandle(CreateFileW(DevicePath(device_).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
  taken_ = false;
  if (port_.IsOpen()) {
    Outcome set = SetUp();
    if (!set) static_cast<void>(port_.Close());
    return set;
  }
  const DWORD error = GetLastError();
  taken_ = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
  return Failure{"cannot open '" + device_ + "': " + WhyNotOpened(error)};
}

Outcome SerialLine::SetUp() {
  DCB line{};
  line.DCBlength = sizeof line;
  if (!GetCommState(port_.Get(), &line)) {
    events_.push_back(kCommDCB);
    return Failure{"cannot open '" + device_ + "': it is no serial port"};
  }
  SetupComm(port_.Get(), kQueueBytes, kQueueBytes);  // a wish; drivers have their own mind
  ConfigureLine(line, settings_, handshaking_);
  if (!SetCommState(port_.Get(), &line))
    return Failure{
        "cannot open '" + device_ +
        "': it does not take these line settings or this handshaking: " + SystemErrorText(GetLastError())};
  // A read ends with the first bytes, a write when all have left.
  COMMTIMEOUTS times{};
  times.ReadIntervalTimeout = times.ReadTotalTimeoutMultiplier = MAXDWORD;
  times.ReadTotalTimeoutConstant = MAXDWORD - 1;
  if (!SetCommTimeouts(port_.Get(), &times))
    return Failure{"cannot open '" + device_ + "': " + SystemErrorText(GetLastError())};
  watchable_ = SetCommMask(port_.Get(), kSignalEvents) != 0;
  return {};
}

std::size_t SerialLine::BlockBytes() const {
  return static_cast<std::size_t>(std::clamp(settings_.baud / 40, 16, 4096));
}

void SerialLine::Write(std::string block) {
  block_ = std::move(block);
  queue_ += block_.size();
  const bool begun = write_.Start([this](OVERLAPPED* call) {
    return WriteFile(port_.Get(), block_.data(), static_cast<DWORD>(block_.size()), nullptr, call);
  });
  if (!begun) Gone();
}

// Not every driver counts what it has not sent.
std::size_t SerialLine::Unsent() const {
  return write_.UnderWay() && queue_ == 0 ? block_.size() : queue_;
}

// What is there, else the next byte: not every driver ends a longer read before it is full.
bool SerialLine::Read() {
  if (!Look()) return false;
  const auto most = static_cast<DWORD>(std::clamp<std::size_t>(arrived_, 1, sizeof readBytes_));
  const bool begun = read_.Start(
      [this, most](OVERLAPPED* call) { return ReadFile(port_.Get(), readBytes_, most, nullptr, call); });
  return begun || Gone();
}

bool SerialLine::Gone() {
  if (problem_.empty()) problem_ = "'" + device_ + "' is gone: " + SystemErrorText(GetLastError());
  return false;
}

bool SerialLine::Wait(HANDLE wake, bool receive) {
  if (!problem_.empty()) return false;
  if (receive && !readPauses_ && !read_.UnderWay() && !Read()) return false;
  HANDLE handles[4] = {wake};
  DWORD count = 1;
  for (const OverlappedCall* call : {&read_, &write_, &watch_})
    if (call->UnderWay()) handles[count++] = call->Done();
  const bool drains = !write_.UnderWay() && queue_ > 0;
  const DWORD longest = drains ? kDrainInterval : static_cast<DWORD>(kLookInterval);
  if (WaitForMultipleObjects(count, handles, FALSE, longest) == WAIT_FAILED) return Gone();
  if (!EndCalls()) return false;
  const bool due = !looked_ || GetTickCount64() - *looked_ >= kLookInterval;
  if (!due) return !drains || Look();
  if (!Look()) return false;
  Count();
  return true;
}

bool SerialLine::EndCalls() {
  if (watch_.UnderWay() && watch_.IsDone()) {
    watchable_ = watch_.End(port_.Get()).has_value();
    if (watchable_) changes_ |= watched_;
  }
  if (write_.UnderWay() && write_.IsDone()) {
    if (!write_.End(port_.Get())) return Gone();
    if (!Look()) return false;  // what is left of it with the driver
  }
  if (!read_.UnderWay() || !read_.IsDone()) return true;
  const std::optional<std::size_t> got = read_.End(port_.Get());
  if (!got) return Gone();
  readPauses_ = *got == 0;
  received_.append(readBytes_, *got);
  return true;
}

// A device that was pulled out no longer answers, though no call may have ended.
bool SerialLine::Look() {
  DWORD errors = 0;
  COMSTAT now{};
  if (!ClearCommError(port_.Get(), &errors, &now)) return Gone();
  errors_ |= errors;
  queue_ = now.cbOutQue;
  arrived_ = now.cbInQue;
  held_ = now.fCtsHold != 0;
  return true;
}

// Where changes are told of, short ones too, the level tells nothing more.
void SerialLine::LookAtSignals() {
  DWORD signals = 0;
  if (!GetCommModemStatus(port_.Get(), &signals)) return;
  state_.cts = (signals & MS_CTS_ON) != 0;
  state_.dsr = (signals & MS_DSR_ON) != 0;
  state_.carrier = (signals & MS_RLSD_ON) != 0;
  state_.ringing = (signals & MS_RING_ON) != 0;
  if (!watchable_) return;
  told_.cts = state_.cts;
  told_.dsr = state_.dsr;
  told_.carrier = state_.carrier;
  told_.ringing = state_.ringing;
}

// What happened since the last count becomes events; it is told twice a second, however noisy the line.
void SerialLine::Count() {
  const bool first = !looked_;
  looked_ = GetTickCount64();
  readPauses_ = false;
  CountLineEvents(state_, changes_, errors_);
  LookAtSignals();
  looksHeld_ = held_ && Unsent() > 0 ? looksHeld_ + 1 : 0;
  if (!first) {
    events_ = CommEventsBetween(told_, state_);
    if ((errors_ & CE_TXFULL) != 0) events_.push_back(kCommTransmitFull);
    if (looksHeld_ == kHeldLooks) events_.push_back(kCommCTSTimeout);
  }
  told_ = state_;
  changes_ = errors_ = 0;
  if (watchable_ && !watch_.UnderWay())
    watchable_ = watch_.Start([this](OVERLAPPED* call) {
      watched_ = 0;
      return WaitCommEvent(port_.Get(), &watched_, call);
    });
}

}  // namespace zeb
