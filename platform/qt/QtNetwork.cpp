#include "platform/qt/QtNetwork.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <utility>

#include "platform/qt/QtStream.h"

namespace zeb {

struct QtNetwork::State : QtStreams {
  using QtStreams::QtStreams;

  // With the system's own, once there are others: Qt then no longer looks the system's up by itself.
  QList<QSslCertificate> authorities;
};

namespace {

using namespace std::chrono_literals;

// An IPv4 peer of a listener on all interfaces comes as ::ffff:192.0.2.7.
std::string PlainAddress(QHostAddress address) {
  bool isIpv4 = false;
  const quint32 ipv4 = address.toIPv4Address(&isIpv4);
  if (isIpv4) return QHostAddress(ipv4).toString().toStdString();
  address.setScopeId({});
  return address.toString().toStdString();
}

class QtConnection : public TcpConnection, public QtStreamUser {
 public:
  QtConnection(std::shared_ptr<QtNetwork::State> network, std::unique_ptr<QTcpSocket> socket)
      : address_(PlainAddress(socket->peerAddress())),
        port_(socket->peerPort()),
        stream_(std::make_shared<QtStream>(std::move(network), std::move(socket), this)) {
    stream_->TakeAccepted();
  }
  ~QtConnection() override {
    if (!closed_) stream_->Abort();
  }

  std::weak_ptr<QtStream> Stream() const { return stream_; }

  void Send(std::string_view bytes) override {
    if (!closed_) stream_->Send(bytes);
  }
  std::size_t UnsentBytes() const override { return stream_->Unsent(); }
  void Close() override {
    if (!std::exchange(closed_, true)) stream_->Finish();
  }
  std::string PeerAddress() const override { return address_; }
  std::uint16_t PeerPort() const override { return port_; }

 private:
  void Connected() override {}
  void Arrived(std::string_view bytes) override {
    if (const auto callback = onData) callback(bytes);
  }
  void Ended(const std::string&) override {
    closed_ = true;
    if (const auto callback = onClosed) callback();
  }

  std::string address_;
  std::uint16_t port_;
  bool closed_ = false;
  std::shared_ptr<QtStream> stream_;
};

class QtListener : public TcpListener {
 public:
  explicit QtListener(std::shared_ptr<QtNetwork::State> network) : network_(std::move(network)) {}
  ~QtListener() override = default;

  Outcome Listen(const std::string& address, std::uint16_t port) override {
    Close();
    QHostAddress where(QHostAddress::Any);
    if (!address.empty() && !where.setAddress(QString::fromStdString(address))) {
      return Failure{"cannot listen on '" + address + "': not an address"};
    }
    auto server = std::make_shared<QTcpServer>();
    server->setProxy(QNetworkProxy::NoProxy);
    if (!server->listen(where, port)) {
      return Failure{"cannot listen on " + (address.empty() ? "port " : address + ":") +
                     std::to_string(port) + ": " + server->errorString().simplified().toStdString()};
    }
    QTcpServer* raw = server.get();
    QObject::connect(raw, &QTcpServer::newConnection, raw, [this] { TakeConnections(); });
    // Qt stops accepting when the system runs out of descriptors; those come back.
    QObject::connect(raw, &QTcpServer::acceptError, raw,
                     [this, raw] { retry_ = network_->loop.After(1s, [raw] { raw->resumeAccepting(); }); });
    server_ = std::move(server);
    return {};
  }

  void Close() override {
    retry_.Stop();
    server_.reset();
  }

  std::uint16_t Port() const override { return server_ ? server_->serverPort() : std::uint16_t{0}; }

 private:
  void TakeConnections() {
    while (QTcpSocket* socket = server_->nextPendingConnection()) {
      socket->setParent(nullptr);
      auto connection = std::make_shared<std::unique_ptr<QtConnection>>(
          std::make_unique<QtConnection>(network_, std::unique_ptr<QTcpSocket>(socket)));
      network_->loop.Post([this, server = std::weak_ptr(server_), connection] {
        if (!server.expired()) HandOver(std::move(*connection));
      });
    }
  }

  void HandOver(std::unique_ptr<QtConnection> connection) {
    const std::weak_ptr<QtStream> stream = connection->Stream();
    if (const auto callback = onConnection) callback(std::move(connection));
    // Bytes are let through once somebody has had the chance to ask for them.
    if (const auto kept = stream.lock()) kept->Release();
  }

  std::shared_ptr<QtNetwork::State> network_;
  std::shared_ptr<QTcpServer> server_;
  Timer retry_;
};

class QtClient : public TcpClientControl, public QtStreamUser {
 public:
  explicit QtClient(std::shared_ptr<QtNetwork::State> network) : network_(std::move(network)) {}
  ~QtClient() override {
    if (stream_) stream_->Abort();
  }

  State CurrentState() const override {
    if (!stream_) return UnsentBytes() > 0 ? kClosing : idleState_;
    if (connected_) return kConnected;
    return stream_->Resolving() ? kResolving : kConnecting;
  }

  void Connect(const std::string& host, std::uint16_t port) override {
    Begin(std::make_unique<QTcpSocket>());
    stream_->Connect(host, port, QtStream::Security::kNone);
  }

  void ConnectTls(const std::string& host, std::uint16_t port) override {
    auto socket = std::make_unique<QSslSocket>();
    if (!network_->authorities.isEmpty()) {
      QSslConfiguration configuration = socket->sslConfiguration();
      configuration.setCaCertificates(network_->authorities);
      socket->setSslConfiguration(configuration);
    }
    Begin(std::move(socket));
    stream_->Connect(host, port, QtStream::Security::kTls);
  }

  void SendData(std::string_view bytes) override {
    if (connected_) stream_->Send(bytes);
  }

  std::size_t UnsentBytes() const override {
    if (stream_) return stream_->Unsent();
    const auto leaving = leaving_.lock();
    return leaving ? leaving->Unsent() : 0;
  }

  void Close() override {
    idleState_ = kClosed;
    if (!stream_) return;
    stream_->Finish();
    leaving_ = stream_;
    stream_.reset();
    connected_ = false;
  }

  std::string LastError() const override { return error_; }

 private:
  void Begin(std::unique_ptr<QTcpSocket> socket) {
    Close();
    leaving_.reset();
    error_.clear();
    stream_ = std::make_shared<QtStream>(network_, std::move(socket), this);
  }

  void Connected() override {
    connected_ = true;
    if (const auto callback = onConnected) callback();
  }

  void Arrived(std::string_view bytes) override {
    if (const auto callback = onData) callback(bytes);
  }

  void Ended(const std::string& reason) override {
    error_ = reason;
    idleState_ = reason.empty() ? kClosed : kError;
    stream_.reset();
    connected_ = false;
    if (const auto callback = onClosed) callback();
  }

  std::shared_ptr<QtNetwork::State> network_;
  std::shared_ptr<QtStream> stream_;  // from Connect to the end
  std::weak_ptr<QtStream> leaving_;   // after Close: alive while it still sends
  bool connected_ = false;            // and told so
  State idleState_ = kClosed;         // while there is no stream
  std::string error_;
};

}  // namespace

QtNetwork::QtNetwork(EventLoop& loop) : state_(std::make_shared<State>(loop)) {}

// Leaving streams hold the state, so the state must let go of them.
QtNetwork::~QtNetwork() {
  const auto leaving = std::exchange(state_->leaving, {});
}

Outcome QtNetwork::AddCaFile(const std::string& path) {
  const auto certificates = QSslCertificate::fromPath(QString::fromStdString(path), QSsl::Pem,
                                                      QSslCertificate::PatternSyntax::FixedString);
  if (certificates.isEmpty()) return Failure{"no certificate in '" + path + "'"};
  if (state_->authorities.isEmpty()) state_->authorities = QSslConfiguration::systemCaCertificates();
  state_->authorities += certificates;
  return {};
}

std::unique_ptr<TcpListener> QtNetwork::MakeListener() {
  return std::make_unique<QtListener>(state_);
}

std::shared_ptr<TcpClientControl> QtNetwork::MakeClient() {
  return std::make_shared<QtClient>(state_);
}

}  // namespace zeb
