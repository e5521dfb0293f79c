#include "outputs/labels/LabelServer.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <map>
#include <set>
#include <utility>

#include "diagnostics/RepeatedNote.h"
#include "outputs/labels/LabelWords.h"
#include "platform/WorkLane.h"
#include "text/LetterCase.h"
#include "text/LineSplitter.h"
#include "text/OneLine.h"
#include "text/Parameters.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMaxConnections = 32;
constexpr std::size_t kMaxLineBytesHere = 4096;
constexpr std::size_t kMaxQueuedLines = 64;
constexpr std::size_t kMaxUnsentBytes = 64 * 1024;
constexpr int kMaxTries = 3;
constexpr Duration kRefusalDelay = 1s;
constexpr Duration kLogOnLimit = 30s;  // a connection that does not log on gives its place to another
constexpr Duration kWriteLimit = 30s;  // for another connection's write to the same file

struct Peer {
  std::unique_ptr<TcpConnection> connection;
  LineSplitter lines{kMaxLineBytesHere};
  std::deque<std::string> queue;
  Timer logOnLimit;
  const LabelService* service = nullptr;  // logged on as
  int tries = 0;
  bool open = true;
  bool working = false;  // its task runs
  bool ended = false;    // the client has closed
};
using PeerPtr = std::shared_ptr<Peer>;

}  // namespace

struct LabelServer::State : std::enable_shared_from_this<State> {
  State(EventLoop& givenLoop, Network& givenNetwork, FileSystem& givenFiles, Operator& givenPerson,
        std::vector<LabelService> givenServices)
      : loop(givenLoop),
        network(givenNetwork),
        files(givenFiles),
        person(givenPerson),
        services(std::move(givenServices)) {}

  EventLoop& loop;
  Network& network;
  FileSystem& files;
  Operator& person;
  const std::vector<LabelService> services;
  std::unique_ptr<TcpListener> listener;
  std::vector<PeerPtr> peers;
  std::set<std::string> filesInHand;
  std::map<std::string, WorkLane> lanes;  // by file: a share that hangs holds one worker
  std::set<std::string> failingFiles;     // reported, until they can be written again
  RepeatedNote tooMany, refused;

  void Note(const std::string& text) const { person.Note(text); }

  // ---- Connections

  void OnConnection(std::unique_ptr<TcpConnection> connection) {
    if (peers.size() >= kMaxConnections) {
      if (const auto more = tooMany.Next(loop.Monotonic()))
        Note("turned away " + connection->PeerAddress() + ", since " + std::to_string(kMaxConnections) +
             " are connected" + *more);
      return;
    }
    const auto peer = std::make_shared<Peer>();
    peer->connection = std::move(connection);
    const std::weak_ptr<Peer> from = peer;
    const auto guarded = [weak = weak_from_this(), from](auto work) {
      return [weak, from, work](auto... arguments) {
        const auto state = weak.lock();
        const auto sender = from.lock();
        if (state && sender) work(*state, sender, arguments...);
      };
    };
    peer->connection->onData = guarded(
        [](State& state, const PeerPtr& sender, std::string_view bytes) { state.OnData(sender, bytes); });
    // What came before the end is still handled: the last label would be lost otherwise.
    peer->connection->onClosed = guarded([](State& state, const PeerPtr& sender) {
      sender->ended = true;
      if (!sender->working) state.Drop(sender);
    });
    peer->logOnLimit =
        loop.After(kLogOnLimit, guarded([](State& state, const PeerPtr& sender) { state.Drop(sender); }));
    peers.push_back(peer);
  }

  // Forgets the peer; its connection ends with the last handler or task that uses it.
  void Drop(const PeerPtr& peer) {
    if (!peer->open) return;
    peer->open = false;
    if (peer->service) Note("'" + OneLine(peer->service->name) + "' logged off");
    peer->logOnLimit.Stop();
    peer->connection->Close();
    peers.erase(std::remove(peers.begin(), peers.end(), peer), peers.end());
  }

  void OnData(const PeerPtr& peer, std::string_view bytes) {
    const bool readable = peer->lines.Feed(bytes, [&](std::string_view line) {
      peer->queue.emplace_back(line);
      return peer->queue.size() <= kMaxQueuedLines;
    });
    if (!readable || peer->queue.size() > kMaxQueuedLines) {
      Refuse(peer, "too much at a time");
      Drop(peer);
      return;
    }
    if (peer->working || peer->queue.empty()) return;
    peer->working = true;
    loop.Start("label connection", [self = shared_from_this(), peer] {
      try {
        self->Work(peer);
      } catch (const std::exception& error) {
        self->Note(std::string("a connection failed: ") + error.what());
        self->Drop(peer);
      }
      peer->working = false;
      if (peer->ended) self->Drop(peer);
    });
  }

  void Work(const PeerPtr& peer) {
    while (peer->open && !peer->queue.empty()) {
      const std::string line = std::move(peer->queue.front());
      peer->queue.pop_front();
      HandleLine(peer, line);
    }
  }

  void Refuse(const PeerPtr& peer, const std::string& why) {
    Reply(peer, std::string(kErrorAnswer) + " " + why);
  }

  void Reply(const PeerPtr& peer, std::string_view line) {
    if (!peer->open) return;
    peer->connection->Send(std::string(line) + "\r\n");
    if (peer->connection->UnsentBytes() > kMaxUnsentBytes) Drop(peer);
  }

  // ---- Commands

  void HandleLine(const PeerPtr& peer, std::string_view line) {
    const std::string_view command = FirstWord(line), arguments = AfterFirstWord(line);
    if (EqualIgnoringAsciiCase(command, kLogOnCommand)) {
      LogOn(peer, arguments);
    } else if (EqualIgnoringAsciiCase(command, kLabelCommand)) {
      TakeLabel(peer, arguments);
    } else if (EqualIgnoringAsciiCase(command, kLogOffCommand)) {
      Reply(peer, kOkAnswer);
      Drop(peer);
    } else {
      Refuse(peer, "unknown command");
    }
  }

  void LogOn(const PeerPtr& peer, std::string_view arguments) {
    const std::string name = ParameterValue(arguments, kServiceParameter);
    const std::string password = ParameterValue(arguments, kPasswordParameter);
    const auto found = std::find_if(services.begin(), services.end(), [&](const LabelService& service) {
      return EqualIgnoringCase(service.name, name) && service.password == password;
    });
    if (found == services.end()) return RefuseLogOn(peer, name);
    peer->service = &*found;
    peer->logOnLimit.Stop();
    Note("'" + OneLine(found->name) + "' logged on from " + peer->connection->PeerAddress());
    Reply(peer, kOkAnswer);
  }

  // The delay makes guessing slow; nothing tells a wrong name from a wrong password.
  void RefuseLogOn(const PeerPtr& peer, const std::string& name) {
    const int tried = ++peer->tries;
    loop.Wait(kRefusalDelay);
    if (const auto more = refused.Next(loop.Monotonic()))
      Note("refused a log-on as '" + OneLine(name, 64) + "' from " + peer->connection->PeerAddress() + *more);
    Refuse(peer, "wrong service or password");
    if (tried >= kMaxTries) Drop(peer);
  }

  void TakeLabel(const PeerPtr& peer, std::string_view arguments) {
    if (!peer->service) return Refuse(peer, "not logged on");
    std::string label = ParameterValue(arguments, kTextParameter);
    BlankControls(label);
    if (const std::size_t bytes = LabelBytes(label); bytes > kMaxLabelBytes)
      return Refuse(peer, "the label has " + std::to_string(bytes) + " bytes, at most " +
                              std::to_string(kMaxLabelBytes) + " are allowed");
    const std::string& file = peer->service->fileName;
    const Outcome written = WriteLabel(file, label);
    if (written) {
      if (failingFiles.erase(file) > 0) Note("'" + file + "' can be written again");
      return Reply(peer, kOkAnswer);
    }
    if (failingFiles.insert(file).second) Note(written.Reason());
    Refuse(peer, "the label cannot be written");
  }

  // The encoder reads the file at any moment: it finds the old label or the new one, whole.
  Outcome WriteLabel(const std::string& file, const std::string& label) {
    const auto free = [this, &file] { return !filesInHand.contains(file); };
    if (!loop.WaitUntil(free, kWriteLimit)) return Failure{"'" + file + "' is still being written"};
    struct Held {
      Held(std::set<std::string>& givenFiles, std::string givenName)
          : files(givenFiles), name(std::move(givenName)) {
        files.insert(name);
      }
      ~Held() { files.erase(name); }
      Held(const Held&) = delete;
      Held& operator=(const Held&) = delete;
      std::set<std::string>& files;
      const std::string name;
    };
    const Held held(filesInHand, file);
    const auto written = lanes.try_emplace(file, loop)
                             .first->second.Run(
                                 [&written = files, file, label] {
                                   const auto target = written.FindTarget(file, LinkRules{true, {}, {}});
                                   return target ? target.Value()->Replace(label) : Outcome(target);
                                 },
                                 kWriteLimit);
    return written ? *written : Failure{"'" + file + "' is still being written"};
  }

  void Close() {
    listener.reset();
    const std::vector<PeerPtr> all = peers;
    for (const PeerPtr& peer : all) Drop(peer);
  }
};

LabelServer::LabelServer(EventLoop& loop, Network& network, FileSystem& files, Operator& person,
                         std::vector<LabelService> services)
    : state_(std::make_shared<State>(loop, network, files, person, std::move(services))) {}

LabelServer::~LabelServer() {
  state_->Close();
}

Outcome LabelServer::Listen(const std::string& address, std::uint16_t port) {
  state_->listener = state_->network.MakeListener();
  state_->listener->onConnection = [weak = std::weak_ptr<State>(state_)](auto connection) {
    if (const auto state = weak.lock()) state->OnConnection(std::move(connection));
  };
  return state_->listener->Listen(address, port);
}

std::uint16_t LabelServer::Port() const {
  return state_->listener ? state_->listener->Port() : std::uint16_t{0};
}

void LabelServer::Close() {
  state_->Close();
}

std::size_t LabelServer::ConnectionCount() const {
  return state_->peers.size();
}

}  // namespace zeb
