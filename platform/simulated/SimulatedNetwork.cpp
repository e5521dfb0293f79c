#include "platform/simulated/SimulatedNetwork.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace zeb {

namespace {

// As much as a real socket hands over at a time.
constexpr std::size_t kPieceBytes = 64 * 1024;

class End;

// Who uses one end of a stream. What it is told comes from the loop, and it may destroy itself in there.
class EndUser {
 public:
  virtual ~EndUser() = default;
  virtual void Arrived(std::string_view bytes) = 0;
  virtual void PeerClosed() = 0;
};

}  // namespace

struct SimulatedNetwork::State {
  explicit State(EventLoop& givenLoop) : loop(givenLoop) {}

  EventLoop& loop;
  std::map<std::string, HostBehaviour> hosts;
  std::set<std::uint16_t> blockedPorts;
  std::map<std::uint16_t, std::function<void(std::unique_ptr<TcpConnection>)>> listeners;
  std::map<std::string, std::function<void(std::unique_ptr<TcpConnection>)>> localListeners;
  std::vector<std::shared_ptr<End>> stalled;  // with bytes that nobody takes while reading is stopped
  bool readingStopped = false;
  std::string clientAddress = "127.0.0.1";
  std::uint16_t nextClientPort = 50000;
  std::uint16_t nextFreePort = 49152;

  HostBehaviour BehaviourOf(const std::string& host) const {
    const auto found = hosts.find(host);
    return found == hosts.end() ? HostBehaviour::kNormal : found->second;
  }
};

namespace {

// One end of a stream: what it has sent that the other end has not taken yet. Lives until all of it is taken,
// also when its user is gone.
class End : public std::enable_shared_from_this<End> {
 public:
  using Network = SimulatedNetwork::State;

  explicit End(std::shared_ptr<Network> network) : network_(std::move(network)) {}

  static void Join(const std::shared_ptr<End>& a, const std::shared_ptr<End>& b) {
    a->peer_ = b;
    b->peer_ = a;
  }

  void SetUser(EndUser* user) { user_ = user; }

  void Send(std::string_view bytes) {
    if (!open_) return;
    queue_ += bytes;
    PostPump();
  }

  std::size_t Unsent() const { return queue_.size(); }

  // What was sent still arrives, then the peer hears of the close.
  void Finish() {
    user_ = nullptr;
    open_ = false;
    finishing_ = true;
    PostPump();
  }

  // What has not arrived never will.
  void Abort() {
    queue_.clear();
    Finish();
  }

  void PostPump() {
    if (pumpPosted_) return;
    pumpPosted_ = true;
    network_->loop.Post([self = shared_from_this()] { self->Pump(); });
  }

 private:
  void Pump() {
    pumpPosted_ = false;
    const std::shared_ptr<End> peer = peer_.lock();
    if (!peer || !peer->open_) {
      queue_.clear();
      return;
    }
    if (!queue_.empty()) {
      if (network_->readingStopped) {
        network_->stalled.push_back(shared_from_this());
        return;
      }
      const std::string piece = queue_.substr(0, kPieceBytes);
      queue_.erase(0, piece.size());
      if (!queue_.empty() || finishing_) PostPump();
      if (peer->user_) peer->user_->Arrived(piece);
    } else if (finishing_) {
      peer->open_ = false;
      peer->queue_.clear();
      if (EndUser* user = std::exchange(peer->user_, nullptr)) user->PeerClosed();
    }
  }

  std::shared_ptr<Network> network_;
  std::weak_ptr<End> peer_;
  EndUser* user_ = nullptr;
  std::string queue_;
  bool open_ = true;  // its user may send, and takes bytes
  bool finishing_ = false;
  bool pumpPosted_ = false;
};

class SimulatedConnection : public TcpConnection, private EndUser {
 public:
  SimulatedConnection(std::shared_ptr<End> end, std::string address, std::uint16_t port)
      : end_(std::move(end)), address_(std::move(address)), port_(port) {
    end_->SetUser(this);
  }
  ~SimulatedConnection() override {
    if (!closed_) end_->Abort();
  }

  void Send(std::string_view bytes) override { end_->Send(bytes); }
  std::size_t UnsentBytes() const override { return end_->Unsent(); }
  void Close() override {
    if (std::exchange(closed_, true)) return;
    end_->Finish();
  }
  std::string PeerAddress() const override { return address_; }
  std::uint16_t PeerPort() const override { return port_; }

 private:
  void Arrived(std::string_view bytes) override {
    if (const auto callback = onData) callback(bytes);
  }
  void PeerClosed() override {
    closed_ = true;
    if (const auto callback = onClosed) callback();
  }

  std::shared_ptr<End> end_;
  std::string address_;
  std::uint16_t port_;
  bool closed_ = false;
};

class SimulatedListener : public TcpListener {
 public:
  explicit SimulatedListener(std::shared_ptr<SimulatedNetwork::State> network)
      : network_(std::move(network)) {}
  ~SimulatedListener() override { SimulatedListener::Close(); }

  Outcome Listen(const std::string&, std::uint16_t port) override {
    Close();
    if (port == 0) port = FreePort();
    if (network_->blockedPorts.contains(port) || network_->listeners.contains(port)) {
      return Failure{"cannot listen on port " + std::to_string(port) + ": address already in use"};
    }
    port_ = port;
    network_->listeners[port] = [this](std::unique_ptr<TcpConnection> connection) {
      if (const auto callback = onConnection) callback(std::move(connection));
    };
    return {};
  }

  void Close() override {
    if (port_ != 0) network_->listeners.erase(port_);
    port_ = 0;
  }

  std::uint16_t Port() const override { return port_; }

 private:
  std::uint16_t FreePort() {
    while (network_->listeners.contains(network_->nextFreePort)) ++network_->nextFreePort;
    return network_->nextFreePort++;
  }

  std::shared_ptr<SimulatedNetwork::State> network_;
  std::uint16_t port_ = 0;  // 0: not listening
};

class SimulatedLocalListener : public LocalListener {
 public:
  explicit SimulatedLocalListener(std::shared_ptr<SimulatedNetwork::State> network)
      : network_(std::move(network)) {}
  ~SimulatedLocalListener() override { SimulatedLocalListener::Close(); }

  Outcome Listen(const std::string& path) override {
    Close();
    if (network_->localListeners.contains(path))
      return Failure{"cannot listen on '" + path + "': another program does"};
    path_ = path;
    network_->localListeners[path] = [this](std::unique_ptr<TcpConnection> connection) {
      if (const auto callback = onConnection) callback(std::move(connection));
    };
    return {};
  }
  Outcome AdmitGroup(const std::string& group) override {
    if (path_.empty()) return Failure{"cannot admit the group '" + group + "': the socket is closed"};
    return {};
  }
  void Close() override {
    if (!path_.empty()) network_->localListeners.erase(std::exchange(path_, ""));
  }

 private:
  std::shared_ptr<SimulatedNetwork::State> network_;
  std::string path_;  // "": not listening
};

class SimulatedClient : public TcpClientControl, private EndUser {
 public:
  explicit SimulatedClient(std::shared_ptr<SimulatedNetwork::State> network) : network_(std::move(network)) {}
  ~SimulatedClient() override {
    if (end_) end_->Abort();
  }

  State CurrentState() const override {
    return state_ == kClosing && leaving_->Unsent() == 0 ? kClosed : state_;
  }

  void Connect(const std::string& host, std::uint16_t port) override {
    Close();
    leaving_.reset();
    error_.clear();
    state_ = kResolving;
    reached_ = kNowhere;
    tls_ = false;
    attempt_ = std::make_shared<bool>(true);
    Later([this, host, port] { Resolved(host, port); });
  }

  void ConnectTls(const std::string& host, std::uint16_t port) override {
    Connect(host, port);
    tls_ = true;
  }

  void SendData(std::string_view bytes) override {
    if (state_ == kConnected) end_->Send(bytes);
  }

  std::size_t UnsentBytes() const override {
    if (end_) return end_->Unsent();
    return leaving_ ? leaving_->Unsent() : 0;
  }

  void Close() override {
    attempt_.reset();
    if (end_) {
      end_->Finish();
      leaving_ = std::move(end_);
      state_ = kClosing;
    } else if (state_ != kClosing) {
      state_ = kClosed;
    }
  }

  std::string LastError() const override { return error_; }
  Progress Reached() const override { return reached_; }

 private:
  // The next step of this attempt to connect, unless it has been given up by then.
  void Later(std::function<void()> step) {
    network_->loop.Post([attempt = std::weak_ptr<bool>(attempt_), step = std::move(step)] {
      if (!attempt.expired()) step();
    });
  }

  void Resolved(const std::string& host, std::uint16_t port) {
    const auto behaviour = network_->BehaviourOf(host);
    if (behaviour == SimulatedNetwork::HostBehaviour::kUnknownName) {
      return Fail("cannot find the host '" + host + "'");
    }
    if (behaviour == SimulatedNetwork::HostBehaviour::kNeverFound) return;
    state_ = kConnecting;
    reached_ = kNameFound;
    if (behaviour == SimulatedNetwork::HostBehaviour::kHangs) return;
    Later([this, host, port, behaviour] {
      if (behaviour == SimulatedNetwork::HostBehaviour::kRefuses || !network_->listeners.contains(port)) {
        return Fail("cannot connect to " + host + ":" + std::to_string(port) + ": connection refused");
      }
      reached_ = kServerReached;
      if (tls_ && behaviour == SimulatedNetwork::HostBehaviour::kWrongCertificate)
        return Fail("cannot connect to " + host + ":" + std::to_string(port) + ": wrong certificate");
      Join(port);
    });
  }

  // The listener hears of the connection first, as a server that answers at once would.
  void Join(std::uint16_t port) {
    end_ = std::make_shared<End>(network_);
    end_->SetUser(this);
    auto other = std::make_shared<End>(network_);
    End::Join(end_, other);
    network_->loop.Post([network = network_, other, port, address = network_->clientAddress,
                         clientPort = network_->nextClientPort++] {
      auto connection = std::make_unique<SimulatedConnection>(other, address, clientPort);
      const auto listener = network->listeners.find(port);
      // The listener may be closed while it is told, so the entry is copied.
      if (listener == network->listeners.end()) return;
      const auto accept = listener->second;
      accept(std::move(connection));
    });
    Later([this] {
      state_ = kConnected;
      reached_ = kReady;
      if (const auto callback = onConnected) callback();
    });
  }

  void Fail(std::string reason) {
    error_ = std::move(reason);
    state_ = kError;
    if (const auto callback = onClosed) callback();
  }

  void Arrived(std::string_view bytes) override {
    if (const auto callback = onData) callback(bytes);
  }

  void PeerClosed() override {
    attempt_.reset();
    end_.reset();
    state_ = kClosed;
    if (const auto callback = onClosed) callback();
  }

  std::shared_ptr<SimulatedNetwork::State> network_;
  State state_ = kClosed;
  std::shared_ptr<bool> attempt_;  // gone once the attempt is given up
  std::shared_ptr<End> end_;       // while connected
  std::shared_ptr<End> leaving_;   // after Close: what is still to be sent
  std::string error_;
  Progress reached_ = kNowhere;
  bool tls_ = false;
};

}  // namespace

SimulatedNetwork::SimulatedNetwork(EventLoop& loop) : state_(std::make_shared<State>(loop)) {}

// Ends hold the state, so the state must let go of them.
SimulatedNetwork::~SimulatedNetwork() {
  state_->stalled.clear();
}

std::unique_ptr<TcpListener> SimulatedNetwork::MakeListener() {
  return std::make_unique<SimulatedListener>(state_);
}

std::shared_ptr<TcpClientControl> SimulatedNetwork::MakeClient() {
  return std::make_shared<SimulatedClient>(state_);
}

std::unique_ptr<LocalListener> SimulatedNetwork::MakeLocalListener() {
  return std::make_unique<SimulatedLocalListener>(state_);
}

LocalLink SimulatedNetwork::ConnectLocal(const std::string& path) {
  if (!state_->localListeners.contains(path))
    return {nullptr, true, "cannot connect to '" + path + "': connection refused"};
  auto mine = std::make_shared<End>(state_), other = std::make_shared<End>(state_);
  End::Join(mine, other);
  auto accepted =
      std::make_shared<std::unique_ptr<TcpConnection>>(new SimulatedConnection(other, kLocalPeer, 0));
  state_->loop.Post([state = state_, path, accepted] {
    const auto listener = state->localListeners.find(path);
    if (listener == state->localListeners.end()) return;
    const auto accept = listener->second;  // it may close the listener
    accept(std::move(*accepted));
  });
  return {std::make_unique<SimulatedConnection>(mine, kLocalPeer, std::uint16_t{0}), false, ""};
}

void SimulatedNetwork::SetHost(const std::string& host, HostBehaviour behaviour) {
  state_->hosts[host] = behaviour;
}

void SimulatedNetwork::BlockPort(std::uint16_t port) {
  state_->blockedPorts.insert(port);
}

void SimulatedNetwork::StopReading(bool on) {
  state_->readingStopped = on;
  if (on) return;
  for (const auto& end : std::exchange(state_->stalled, {})) end->PostPump();
}

void SimulatedNetwork::SetClientAddress(std::string address) {
  state_->clientAddress = std::move(address);
}

}  // namespace zeb
