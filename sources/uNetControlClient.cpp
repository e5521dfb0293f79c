#include "sources/uNetControlClient.h"

#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/LineSplitter.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {

struct uNetControlClient::Impl : std::enable_shared_from_this<Impl> {
  Impl(Network& givenNetwork, Events givenEvents) : network(givenNetwork), events(std::move(givenEvents)) {}

  Network& network;
  Events events;
  std::shared_ptr<TcpClientControl> socket;  // null: no link
  LineSplitter lines;
  State state = State::kDisconnected;
  std::string name, lastError;

  template <class... Arguments>
  static void Raise(const std::function<void(Arguments...)>& event, Arguments... arguments) {
    if (!event) return;
    try {
      event(arguments...);
    } catch (const std::exception&) {
      ReportException("handling an event of the control client", Report::kQuietly);
    }
  }

  void Connect(const std::string& host, std::uint16_t port, const std::string& givenName) {
    Disconnect();
    lines.Reset();
    lastError.clear();
    name = OneLine(givenName);
    socket = network.MakeClient();
    // A socket that has been given up must not speak for the one that followed it.
    const auto guarded = [this, used = socket.get()](auto work) {
      return [weak = weak_from_this(), used, work](auto... arguments) {
        const auto self = weak.lock();
        if (self && self->socket.get() == used) work(*self, arguments...);
      };
    };
    socket->onConnected = guarded([](Impl& self) { self.OnConnected(); });
    socket->onData = guarded([](Impl& self, std::string_view bytes) { self.OnData(bytes); });
    socket->onClosed = guarded([](Impl& self) { self.Fail(self.socket->LastError()); });
    state = State::kConnecting;
    const auto link = socket;
    Raise(events.Connecting);
    if (link == socket) link->Connect(host, port);
  }

  void Disconnect() {
    const auto link = std::exchange(socket, nullptr);
    if (!link) return;
    if (std::exchange(state, State::kDisconnected) == State::kHasControl)
      link->SendData("NET_CONTROL_LOGOFF\r\n");
    link->Close();
  }

  // The socket is let go of, not closed: a peer that does not read must not keep what was queued for it.
  void Fail(std::string reason) {
    const auto link = std::exchange(socket, nullptr);
    if (!link) return;
    state = State::kDisconnected;
    lastError = std::move(reason);
    Raise(events.Disconnected);
  }

  void OnConnected() {
    const auto link = socket;
    state = State::kConnected;
    Raise(events.Connected);
    if (link == socket && link) link->SendData("NET_CONTROL_LOGON " + name + "\r\n");
  }

  void OnData(std::string_view bytes) {
    const auto link = socket;  // alive while its bytes are read
    const bool readable = lines.Feed(bytes, [&](std::string_view line) {
      HandleLine(line);
      return link == socket;
    });
    if (!readable) Fail("the server sent a line of more than 1 MiB");
  }

  void HandleLine(std::string_view line) {
    const FirstWord words = CutFirstWord(line);
    if (EqualIgnoringAsciiCase(line, "NET_CONTROL_GRANTED")) {
      state = State::kHasControl;
      Raise(events.ControlGranted);
    } else if (EqualIgnoringAsciiCase(words.word, "NET_CONTROL_REFUSED")) {
      state = State::kRefused;
      Raise<const std::string&>(events.ControlRefused, DecodeLenient(TrimBlanks(words.rest)));
    } else if (EqualIgnoringAsciiCase(line, "NET_CONTROL_ENDED")) {
      EndControl();
    } else if (EqualIgnoringAsciiCase(line, "NET_CONTROL_REQUIRED")) {
      // The answer to a line from someone without control: what control there was is gone.
      if (state == State::kHasControl) EndControl();
    } else {
      Raise(events.Message, line);
    }
  }

  void EndControl() {
    state = State::kControlEnded;
    Raise(events.ControlEnded);
  }

  void Send(std::string_view line) {
    if (!socket || state == State::kConnecting) return;
    std::string text(line);
    text += "\r\n";
    socket->SendData(text);
    if (socket->UnsentBytes() > kMaxUnsentBytes) Fail("the server does not read what it is sent");
  }
};

uNetControlClient::uNetControlClient(EventLoop& /*loop*/, Network& network, Events events)
    : impl_(std::make_shared<Impl>(network, std::move(events))) {}

uNetControlClient::~uNetControlClient() {
  impl_->Disconnect();
}

// Each call holds the implementation, since an event that it raises may destroy this object.
void uNetControlClient::Connect(const std::string& host, std::uint16_t port, const std::string& name) {
  const auto impl = impl_;
  impl->Connect(host, port, name);
}

void uNetControlClient::Disconnect() {
  impl_->Disconnect();
}

void uNetControlClient::LogOff() {
  if (impl_->state == State::kHasControl) Send("NET_CONTROL_LOGOFF");
}

uNetControlClient::State uNetControlClient::CurrentState() const {
  return impl_->state;
}

std::string uNetControlClient::LastError() const {
  return impl_->lastError;
}

void uNetControlClient::Send(std::string_view line) {
  const auto impl = impl_;
  impl->Send(line);
}

std::size_t uNetControlClient::UnsentBytes() const {
  return impl_->socket ? impl_->socket->UnsentBytes() : 0;
}

}  // namespace zeb
