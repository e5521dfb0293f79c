// Listening sockets by Qt's own, which knows how Windows tells of events of sockets.

#include <QHostAddress>
#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>
#include <chrono>
#include <utility>

#include "platform/qt/Listeners.h"
#include "platform/qt/QtNetworkState.h"
#include "platform/qt/QtStream.h"

namespace zeb {
namespace {

constexpr Duration kPause = std::chrono::seconds(1);

// An IPv4 peer of a listener on all interfaces comes as ::ffff:192.0.2.7.
std::string PlainAddress(QHostAddress address) {
  bool isIpv4 = false;
  const quint32 ipv4 = address.toIPv4Address(&isIpv4);
  if (isIpv4) return QHostAddress(ipv4).toString().toStdString();
  address.setScopeId({});
  return address.toString().toStdString();
}

class AcceptedConnection : public TcpConnection, public QtStreamUser {
 public:
  AcceptedConnection(std::shared_ptr<QtNetworkState> network, std::unique_ptr<QTcpSocket> socket)
      : address_(PlainAddress(socket->peerAddress())),
        port_(socket->peerPort()),
        stream_(std::make_shared<QtStream>(std::move(network), std::move(socket), this)) {}
  ~AcceptedConnection() override {
    if (!closed_) stream_->Abort();
  }

  // Bytes are let through once somebody has had the chance to ask for them.
  void Begin() { stream_->TakeAccepted(); }

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
  void NameFound() override {}
  void ServerReached() override {}
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

class SocketListener : public TcpListener {
 public:
  explicit SocketListener(std::shared_ptr<QtNetworkState> network) : network_(std::move(network)) {}

  Outcome Listen(const std::string& address, std::uint16_t port) override {
    Close();
    QHostAddress where(QHostAddress::Any);
    const std::string name = (address.empty() ? "port " : address + ":") + std::to_string(port);
    if (!address.empty() && !where.setAddress(QString::fromStdString(address)))
      return Failure{"cannot listen on '" + address + "': not an address"};
    auto server = std::make_shared<QTcpServer>();
    server->setProxy(QNetworkProxy::NoProxy);
    if (!server->listen(where, port))
      return Failure{"cannot listen on " + name + ": " + server->errorString().simplified().toStdString()};
    QTcpServer* const raw = server.get();
    QObject::connect(raw, &QTcpServer::newConnection, raw, [this] { TakeConnections(); });
    QObject::connect(raw, &QTcpServer::acceptError, raw, [this, raw] { Pause(*raw); });
    server_ = std::move(server);
    return {};
  }

  void Close() override {
    pause_.Stop();
    if (!server_) return;
    server_->close();
    // It may be what calls.
    network_->loop.Post([gone = std::exchange(server_, nullptr)] {});
  }

  std::uint16_t Port() const override { return server_ ? server_->serverPort() : std::uint16_t{0}; }

 private:
  // What the system is short of comes back.
  void Pause(QTcpServer& server) {
    if (const auto callback = onTrouble) callback(server.errorString().simplified().toStdString());
    pause_ = network_->loop.After(kPause, [this] {
      if (server_) server_->resumeAccepting();
    });
  }

  void TakeConnections() {
    while (QTcpSocket* const socket = server_->nextPendingConnection()) {
      socket->setParent(nullptr);
      auto connection = std::make_shared<std::unique_ptr<AcceptedConnection>>(
          std::make_unique<AcceptedConnection>(network_, std::unique_ptr<QTcpSocket>(socket)));
      network_->loop.Post([this, server = std::weak_ptr(server_), connection] {
        if (!server.expired() && server_) HandOver(std::move(*connection));
      });
    }
  }

  void HandOver(std::unique_ptr<AcceptedConnection> connection) {
    connection->Begin();
    if (const auto callback = onConnection) callback(std::move(connection));
  }

  std::shared_ptr<QtNetworkState> network_;
  std::shared_ptr<QTcpServer> server_;
  Timer pause_;
};

}  // namespace

std::unique_ptr<TcpListener> MakeSocketListener(std::shared_ptr<QtNetworkState> network) {
  return std::make_unique<SocketListener>(std::move(network));
}

}  // namespace zeb
