#include "platform/windows/WinSerialPortControl.h"

#include <windows.h>

#include <algorithm>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/SerialLineSettings.h"
#include "platform/windows/SerialLine.h"
#include "platform/windows/WideText.h"

namespace zeb {
namespace {

constexpr std::size_t kMostReceived = 64 * 1024;  // that the loop has not taken
// Who has just closed a port may still have it for a moment.
constexpr int kOpenTries = 20;
constexpr DWORD kOpenAgain = 50;  // milliseconds

}  // namespace

// One Open until its Close, shared by the loop and the thread.
struct WinSerialPortControl::Session {
  enum class State { kOpening, kOpen, kFailed, kLost };

  Session(WinSerialPortControl* port, EventLoop& postTo, std::string name, const SerialLineSettings& parsed)
      : owner(port),
        loop(postTo),
        device(std::move(name)),
        settings(parsed),
        handshaking(port->line_.handshaking) {}

  WinSerialPortControl* owner;  // null: closed; asked on the loop's thread only
  EventLoop& loop;
  const std::string device;
  const SerialLineSettings settings;
  const std::int32_t handshaking;

  std::mutex mutex;     // guards what follows
  bool closed = false;  // nothing is posted any more
  bool posted = false;  // the loop is about to take what has come
  State state = State::kOpening;
  std::string error;         // why it is not open
  std::string waiting;       // to be sent
  std::size_t underWay = 0;  // bytes that the system has
  std::string received;
  std::vector<CommEvent> events;

  bool Is(State asked) {
    const std::lock_guard lock(mutex);
    return state == asked;
  }
  bool Closed() {
    const std::lock_guard lock(mutex);
    return closed;
  }
};

// The port's thread: serves one session after the other.
class WinSerialPortControl::Thread {
 public:
  using SessionPtr = std::shared_ptr<Session>;
  using State = Session::State;

  HANDLE Wake() const { return wake_.Get(); }
  void Serve(SessionPtr session) {
    {
      const std::lock_guard lock(mutex_);
      next_ = std::move(session);
    }
    SetEvent(Wake());
  }
  void End() {
    {
      const std::lock_guard lock(mutex_);
      ends_ = true;
    }
    SetEvent(Wake());
  }
  void Run() {
    for (;;) {
      SessionPtr session;
      {
        const std::lock_guard lock(mutex_);
        if (ends_) return;
        session = std::exchange(next_, nullptr);
      }
      if (!session)
        WaitForSingleObject(Wake(), INFINITE);
      else if (!session->Closed())
        ServeOne(session);
    }
  }

 private:
  void ServeOne(const SessionPtr& session) {
    SerialLine line(session->device, session->settings, session->handshaking);
    const Outcome opened = OpenPatiently(line, *session);
    Tell(session, [&] {
      session->state = opened ? State::kOpen : State::kFailed;
      session->error = opened.Reason();
      session->events = line.TakeEvents();
    });
    if (!opened) return;
    while (Turn(line, session)) continue;
  }

  Outcome OpenPatiently(SerialLine& line, Session& session) const {
    Outcome opened = line.Open();
    for (int tries = 1; !opened && line.IsTaken() && tries < kOpenTries && !session.Closed(); ++tries) {
      WaitForSingleObject(Wake(), kOpenAgain);
      opened = line.Open();
    }
    return opened;
  }

  // False: the session has ended.
  bool Turn(SerialLine& line, const SessionPtr& session) const {
    bool receive = false;
    std::string block;
    {
      const std::lock_guard lock(session->mutex);
      if (session->closed) return false;
      receive = session->received.size() < kMostReceived;
      if (!line.Writing() && !session->waiting.empty()) {
        block = session->waiting.substr(0, line.BlockBytes());
        session->waiting.erase(0, block.size());
        session->underWay = block.size();
      }
    }
    if (!block.empty()) line.Write(std::move(block));
    const bool stays = line.Wait(Wake(), receive);
    std::string received = line.TakeReceived();
    std::vector<CommEvent> events = line.TakeEvents();
    const std::lock_guard lock(session->mutex);
    const bool left = session->underWay != line.Unsent();
    session->underWay = line.Unsent();
    session->received += received;
    session->events.insert(session->events.end(), events.begin(), events.end());
    if (!stays) {
      session->state = State::kLost;
      session->error = line.Problem();
    }
    if (left || !received.empty() || !events.empty() || !stays) Post(session);
    return stays;
  }

  template <class Change>
  static void Tell(const SessionPtr& session, Change change) {
    const std::lock_guard lock(session->mutex);
    change();
    Post(session);
  }

  // With the session's lock. Whoever waits on the loop for bytes to leave looks again after it, too.
  static void Post(const SessionPtr& session) {
    if (session->closed || std::exchange(session->posted, true)) return;
    session->loop.PostFromAnyThread([session] { TakeNews(session); });
  }

  const WinHandle wake_{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
  std::mutex mutex_;  // guards what follows
  SessionPtr next_;
  bool ends_ = false;
};

WinSerialPortControl::WinSerialPortControl(EventLoop& loop, Network& network)
    : loop_(loop), remote_(network) {
  remote_.onComm = [this](std::int32_t event, std::string_view data) {
    if (const auto tell = onComm) tell(event, data);
  };
  remote_.onLost = [this] {
    if (const auto tell = onLost) tell();
  };
}

WinSerialPortControl::~WinSerialPortControl() {
  WinSerialPortControl::Close();
  if (thread_) thread_->End();
}

void WinSerialPortControl::SetLine(Line line) {
  remote_.SetLine(line);
  line_ = std::move(line);
}

Outcome WinSerialPortControl::Open() {
  Close();
  if (NetworkSerialPort::IsNetworkDevice(line_.device)) return remote_.Open();
  const Result<SerialLineSettings> settings = ParseSerialLineSettings(line_.settings);
  if (!settings) return settings.AsFailure();
  if (line_.handshaking < kNoHandshaking || line_.handshaking > kRtsXOn)
    return Failure{"there is no handshaking " + std::to_string(line_.handshaking)};
  if (line_.device.empty()) return Failure{"the port has no device name, such as COM1"};
  const auto session = std::make_shared<Session>(this, loop_, line_.device, settings.Value());
  if (!Begin(session)) return Failure{"cannot open '" + line_.device + "': the system has no thread for it"};
  session_ = session;
  return {};
}

bool WinSerialPortControl::Begin(std::shared_ptr<Session> session) {
  if (!thread_) {
    auto thread = std::make_shared<Thread>();
    try {
      std::thread([thread] { thread->Run(); }).detach();
    } catch (const std::system_error&) {
      return false;
    }
    thread_ = std::move(thread);
  }
  thread_->Serve(std::move(session));
  return true;
}

void WinSerialPortControl::Close() {
  remote_.Close();
  const std::shared_ptr<Session> session = std::exchange(session_, nullptr);
  if (!session) return;
  session->owner = nullptr;
  {
    const std::lock_guard lock(session->mutex);
    session->closed = true;
  }
  SetEvent(thread_->Wake());
}

// Whatever is told may be the reason to close the port, or to destroy it.
void WinSerialPortControl::TakeNews(const std::shared_ptr<Session>& session) {
  std::string received;
  std::vector<CommEvent> events;
  bool lost = false;
  {
    const std::lock_guard lock(session->mutex);
    session->posted = false;
    received.swap(session->received);
    events.swap(session->events);
    lost = session->state == Session::State::kLost;
  }
  const auto tell = [&session](std::int32_t event, std::string_view data) {
    if (session->owner == nullptr) return;
    if (const auto told = session->owner->onComm) told(event, data);
  };
  if (!received.empty()) tell(kCommReceive, received);
  for (const CommEvent event : events) tell(event, {});
  if (session->owner == nullptr) return;
  SetEvent(session->owner->thread_->Wake());  // there is room again
  if (const auto told = session->owner->onLost; lost && told) told();
}

bool WinSerialPortControl::PortOpen() const {
  return (session_ && session_->Is(Session::State::kOpen)) || remote_.PortOpen();
}

bool WinSerialPortControl::Opening() const {
  return (session_ && session_->Is(Session::State::kOpening)) || remote_.Opening();
}

std::string WinSerialPortControl::LastError() const {
  if (!session_) return remote_.LastError();
  const std::lock_guard lock(session_->mutex);
  if (session_->state == Session::State::kOpening) return "no answer from '" + session_->device + "'";
  return session_->error;
}

Outcome WinSerialPortControl::Output(std::string_view bytes) {
  if (!session_) return remote_.Output(bytes);
  {
    const std::lock_guard lock(session_->mutex);
    if (session_->state != Session::State::kOpen)
      return Failure{session_->error.empty() ? "'" + session_->device + "' is not open" : session_->error};
    if (bytes.size() > kMostUnsent - std::min(kMostUnsent, session_->waiting.size()))
      return Failure{"'" + session_->device + "' takes no more bytes; check its cable and handshaking"};
    session_->waiting += bytes;
  }
  SetEvent(thread_->Wake());
  return {};
}

std::size_t WinSerialPortControl::OutBufferCount() const {
  if (!session_) return remote_.OutBufferCount();
  const std::lock_guard lock(session_->mutex);
  if (session_->state != Session::State::kOpen) return 0;
  return session_->waiting.size() + session_->underWay;
}

// The system's own list; its devices' names ("\Device\Serial0") tell which is built in.
std::vector<SerialPorts::Found> WinSerialPorts::Available() {
  std::vector<Found> found;
  HKEY list = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, KEY_READ, &list) !=
      ERROR_SUCCESS)
    return found;
  for (DWORD index = 0;; ++index) {
    wchar_t name[256], port[256];
    DWORD nameLength = ARRAYSIZE(name), type = 0, bytes = sizeof port;
    const LSTATUS read =
        RegEnumValueW(list, index, name, &nameLength, nullptr, &type, reinterpret_cast<BYTE*>(port), &bytes);
    if (read == ERROR_MORE_DATA) continue;
    if (read != ERROR_SUCCESS) break;
    if (type != REG_SZ) continue;
    const std::wstring_view text(port, bytes / sizeof *port);
    const std::string device = Narrow({name, nameLength});
    found.push_back({Narrow(text.substr(0, text.find(L'\0'))), device.substr(device.rfind('\\') + 1)});
  }
  RegCloseKey(list);
  std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
    return a.device.size() != b.device.size() ? a.device.size() < b.device.size() : a.device < b.device;
  });
  return found;
}

}  // namespace zeb
