#include "sources/uNetControlServer.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "diagnostics/RepeatedNote.h"
#include "diagnostics/hxGeneral.h"
#include "platform/Tcp.h"
#include "sources/ControlNotes.h"
#include "sources/PeerRanges.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/LineSplitter.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

constexpr std::size_t kMaxConnections = 32;
constexpr std::size_t kMaxUnsentBytes = 1024 * 1024;
constexpr std::size_t kMaxNameCharacters = 64;
constexpr std::string_view kLogon = "NET_CONTROL_LOGON";
// How long a connection without control keeps its place when others want one.
constexpr Duration kIdleTime = std::chrono::seconds(30);
// How long one that found no place has to log on.
constexpr Duration kLogonTime = std::chrono::seconds(5);

struct Client {
  std::unique_ptr<TcpConnection> connection;
  LineSplitter lines;
  std::string name;  // as it gave itself
  int index = 0;     // from 1; 0: it has no place yet
  MonotonicTime since{}, heard{};
  bool open = true;  // false: dropped; kept only until its handler returns

  std::string DisplayName() const { return name.empty() ? connection->PeerAddress() : name; }
};
using ClientPtr = std::shared_ptr<Client>;

}  // namespace

struct uNetControlServer::State : std::enable_shared_from_this<State> {
  State(Environment& givenEnvironment, Events givenEvents)
      : environment(givenEnvironment), events(std::move(givenEvents)) {}

  Environment& environment;
  Events events;
  std::unique_ptr<TcpListener> listener;
  std::string bindAddress;
  PeerRanges allowed;
  std::array<ClientPtr, kMaxConnections> clients;  // a client's index is its place here, from 1
  ClientPtr controller;
  ClientPtr newcomer;  // found every place taken; gets one if it takes control
  Timer newcomerTime;
  std::string reportedBadPeers, reportedListenFailure;
  Outcome listenState;
  RepeatedNote notAllowed, tooMany, displaced, lineTooLong, notReading, noRoom;
  ControlNotes controlNotes{environment.loop, [this](const std::string& text) { Note(text); }};
  bool destroyed = false;

  // ---- Journal

  std::string ServiceName() const {
    return events.ServiceName ? OneLine(events.ServiceName()) : std::string();
  }
  void Note(const std::string& text) const { environment.person.Note(ServiceName() + ": " + text); }
  void NoteSeldom(RepeatedNote& kind, const std::string& text) const {
    if (const auto more = kind.Next(environment.loop.Monotonic())) Note(text + *more);
  }

  // ---- Listening

  std::string RootSetting(const char* name) const {
    try {
      return environment.hive.ReadText(environment.settingsRoot, name, "");
    } catch (const SettingsError&) {
      ReportException("reading who may connect", Report::kQuietly);
      return {};
    }
  }

  void ReadAllowedPeers() {
    const std::string list = RootSetting("ControlAllowedPeers");
    std::vector<std::string> bad;
    allowed = PeerRanges::Parse(list, bad);
    if (list != reportedBadPeers)
      for (const std::string& entry : bad)
        Note("ControlAllowedPeers: '" + OneLine(entry) + "' is no address or range and is left out");
    reportedBadPeers = list;
  }

  Outcome Listen(std::uint16_t port) {
    const std::string address(TrimBlanks(RootSetting("ControlBindAddress")));
    ReadAllowedPeers();
    if (listener && listener->Port() == port && bindAddress == address) return {};
    Close();
    bindAddress = address;
    auto fresh = environment.network.MakeListener();
    fresh->onConnection = [weak = weak_from_this()](std::unique_ptr<TcpConnection> connection) {
      if (const auto state = weak.lock()) state->OnConnection(std::move(connection));
    };
    fresh->onTrouble = [weak = weak_from_this()](const std::string& what) {
      if (const auto state = weak.lock()) state->NoteSeldom(state->noRoom, what);
    };
    Outcome outcome = fresh->Listen(address, port);
    if (!outcome) {
      if (outcome.Reason() != reportedListenFailure) Note(outcome.Reason());
      reportedListenFailure = outcome.Reason();
      listenState = outcome;
      return outcome;
    }
    reportedListenFailure.clear();
    listener = std::move(fresh);
    Note("listening on port " + std::to_string(listener->Port()));
    return {};
  }

  void Close() {
    const auto keep = shared_from_this();
    listener.reset();
    listenState = {};
    CloseConnection(newcomer);
    for (const ClientPtr& slot : clients) CloseConnection(slot);
  }

  // ---- Connections

  void OnConnection(std::unique_ptr<TcpConnection> connection) {
    const std::string address = connection->PeerAddress();
    if (!allowed.Contains(address)) {
      NoteSeldom(notAllowed, "turned away " + address + ", which ControlAllowedPeers does not name");
      return;
    }
    const auto client = std::make_shared<Client>();
    client->since = client->heard = environment.loop.Monotonic();
    client->connection = std::move(connection);
    client->connection->onData = [weak = weak_from_this(),
                                  from = std::weak_ptr<Client>(client)](std::string_view bytes) {
      const auto state = weak.lock();
      const auto sender = from.lock();
      if (state && sender) state->OnData(sender, bytes);
    };
    client->connection->onClosed = [weak = weak_from_this(), from = std::weak_ptr<Client>(client)] {
      const auto state = weak.lock();
      const auto sender = from.lock();
      if (state && sender) state->Drop(sender);
    };
    if (const ClientPtr idle = AllTaken() ? LongestIdle(kIdleTime) : nullptr)
      Displace(idle, "which had not taken control within 30 s");
    if (AllTaken())
      LetWait(client);
    else
      GivePlace(client);
  }

  bool AllTaken() const { return std::find(clients.begin(), clients.end(), nullptr) == clients.end(); }

  // A client's index is its place, from 1.
  void GivePlace(const ClientPtr& client) {
    const auto place = std::find(clients.begin(), clients.end(), nullptr);
    client->index = static_cast<int>(place - clients.begin()) + 1;
    *place = client;
  }

  // Of those without control that have been here for `time`, the one that has been silent for longest.
  ClientPtr LongestIdle(Duration time) const {
    const MonotonicTime before = environment.loop.Monotonic() - time;
    ClientPtr idle;
    for (const ClientPtr& client : clients)
      if (client && client != controller && client->since <= before && (!idle || client->heard < idle->heard))
        idle = client;
    return idle;
  }

  void Displace(const ClientPtr& client, const std::string& why) {
    NoteSeldom(displaced, "closed the connection to " + client->connection->PeerAddress() + ", " + why +
                              ", for another; " + std::to_string(kMaxConnections) + " are connected");
    CloseConnection(client);
  }

  // All places are taken by connections that are new. Only the latest waits beyond them, so that whoever logs
  // on at once is heard, however many keep coming.
  void LetWait(const ClientPtr& client) {
    TurnAwayNewcomer();
    newcomer = client;
    newcomerTime = environment.loop.After(kLogonTime, [this] { TurnAwayNewcomer(); });
  }

  void TurnAwayNewcomer() {
    if (!newcomer) return;
    NoteSeldom(tooMany, "turned away " + newcomer->connection->PeerAddress() + ", since " +
                            std::to_string(kMaxConnections) + " are connected");
    CloseConnection(newcomer);
  }

  // A copy, since Drop may clear what was given.
  void CloseConnection(ClientPtr client) {  // NOLINT(performance-unnecessary-value-param)
    if (!client) return;
    client->connection->Close();
    Drop(client);
  }

  void OnData(const ClientPtr& client, std::string_view bytes) {
    try {
      const bool readable = client->lines.Feed(bytes, [&](std::string_view line) {
        HandleLine(client, line);
        return client->open;
      });
      if (readable || !client->open) return;
      NoteSeldom(lineTooLong, "closed the connection to " + client->connection->PeerAddress() +
                                  ", which sent a line of more than 1 MiB");
      Drop(client);
    } catch (const std::exception&) {
      ReportException("handling a line of the control link", Report::kQuietly);
    }
  }

  // Forgets the client; its connection ends with the last handler that uses it.
  void Drop(const ClientPtr& client) {
    if (!client->open) return;
    client->open = false;
    if (client == newcomer) {
      newcomer.reset();
      newcomerTime.Stop();
      return;
    }
    clients[static_cast<std::size_t>(client->index) - 1].reset();
    if (client == controller) EndControl();
  }

  void Send(const ClientPtr& client, std::string_view text) {
    if (!client->open) return;
    client->connection->Send(text);
    if (client->connection->UnsentBytes() <= kMaxUnsentBytes) return;
    NoteSeldom(notReading, "closed the connection to " + client->connection->PeerAddress() +
                               ", which does not read what it is sent");
    Drop(client);
  }
  void SendLine(const ClientPtr& client, std::string_view line) { Send(client, std::string(line) + "\r\n"); }

  // ---- Commands

  void HandleLine(const ClientPtr& client, std::string_view line) {
    client->heard = environment.loop.Monotonic();
    const FirstWord words = CutFirstWord(line);
    if (EqualIgnoringAsciiCase(words.word, kLogon)) return LogOn(client, words.rest);
    if (client == newcomer) return TurnAwayNewcomer();
    if (HandleQuestion(client, line)) return;
    if (client != controller) {
      SendLine(client, "NET_CONTROL_REQUIRED");
    } else if (EqualIgnoringAsciiCase(line, "NET_CONTROL_LOGOFF")) {
      SendLine(client, "NET_CONTROL_ENDED");
      if (client == controller) EndControl();
    } else if (events.MessageFromController) {
      events.MessageFromController(client->index, line);
    }
  }

  void LogOn(const ClientPtr& client, std::string_view givenName) {
    client->name = OneLine(DecodeLenient(TrimBlanks(givenName)), kMaxNameCharacters);
    if (controller && client != controller && !ComesAgain(client)) {
      SendLine(client, "NET_CONTROL_REFUSED " + controller->DisplayName());
      return;
    }
    const ClientPtr old = std::exchange(controller, client);
    if (old && old != client) {
      SendLine(old, "NET_CONTROL_ENDED");
      CloseConnection(old);
    }
    if (client == newcomer) GiveNewcomerPlace();
    SendLine(client, "NET_CONTROL_GRANTED");
    if (old == client || client != controller) return;
    const std::string name = client->DisplayName();
    controlNotes.Took(name, client->connection->PeerAddress(),
                      old ? " took control on a new connection; its old one was closed" : " took control");
    if (events.ControllerTookControl) events.ControllerTookControl(name);
  }

  // Whether this is the controller on a new connection, which knew before we did that the old one is dead.
  bool ComesAgain(const ClientPtr& client) const {
    return !client->name.empty() && client->name == controller->name &&
           client->connection->PeerAddress() == controller->connection->PeerAddress();
  }

  void GiveNewcomerPlace() {
    const ClientPtr client = std::exchange(newcomer, nullptr);
    newcomerTime.Stop();
    if (AllTaken()) Displace(LongestIdle(Duration::zero()), "which had not taken control");
    GivePlace(client);
  }

  void EndControl() {
    const ClientPtr old = std::exchange(controller, nullptr);
    if (destroyed) return;
    controlNotes.Ended(old->DisplayName(), old->connection->PeerAddress());
    if (events.ControlEnded) events.ControlEnded();
  }

  // The commands that anyone may send.
  bool HandleQuestion(const ClientPtr& client, std::string_view line) {
    const auto is = [&](std::string_view command) { return EqualIgnoringAsciiCase(line, command); };
    if (is("NET_CONTROL?"))
      SendLine(client, controller ? "-Controller         : " + controller->DisplayName()
                                  : "-No controller connected");
    else if (is("HELP"))
      Send(client, events.HelpText ? events.HelpText() : "");
    else if (is("LIST"))
      SendLine(client, "-This is a test message");
    else if (is("SERVICE_NAME?"))
      SendLine(client, "-Service Name       : " + ServiceName());
    else if (is("STATUS?"))
      Send(client, StatusText());
    else if (is("VERSION?"))
      SendLine(client, "-Version            : " ZEB_VERSION);
    else
      return false;
    return true;
  }

  int ConnectionCount() const {
    return static_cast<int>(clients.size()) -
           static_cast<int>(std::count(clients.begin(), clients.end(), nullptr));
  }

  std::string StatusText() const {
    std::string text = events.StatusText ? events.StatusText() : "";
    text += "-Connections        : " + std::to_string(ConnectionCount()) + "\r\n";
    for (const ClientPtr& client : clients) {
      if (!client) continue;
      text +=
          "-   " + client->connection->PeerAddress() + ":" + std::to_string(client->connection->PeerPort());
      if (!client->name.empty()) text += " " + client->name;
      if (client == controller) text += " (Controller)";
      text += "\r\n";
    }
    return text;
  }
};

uNetControlServer::uNetControlServer(Environment& environment, Events events)
    : state_(std::make_shared<State>(environment, std::move(events))) {}

uNetControlServer::~uNetControlServer() {
  state_->destroyed = true;
  state_->Close();
}

Outcome uNetControlServer::Listen(std::uint16_t port) {
  return state_->Listen(port);
}

void uNetControlServer::Close() {
  state_->Close();
}

Outcome uNetControlServer::ListenState() const {
  return state_->listenState;
}

bool uNetControlServer::Listening() const {
  return state_->listener != nullptr;
}

std::uint16_t uNetControlServer::Port() const {
  return state_->listener ? state_->listener->Port() : std::uint16_t{0};
}

int uNetControlServer::ConnectionCount() const {
  return state_->ConnectionCount();
}

std::string uNetControlServer::ControllerName() const {
  return state_->controller ? state_->controller->DisplayName() : std::string();
}

void uNetControlServer::SendToController(std::string_view line) {
  const ClientPtr controller = state_->controller;
  if (controller) state_->SendLine(controller, line);
}

}  // namespace zeb
