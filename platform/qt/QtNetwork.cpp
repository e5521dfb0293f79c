#include "platform/qt/QtNetwork.h"

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpSocket>
#include <utility>

#include "platform/qt/Listeners.h"
#include "platform/qt/QtNetworkState.h"
#include "platform/qt/QtStream.h"

namespace zeb {

namespace {

class QtClient : public TcpClientControl, public QtStreamUser {
 public:
  explicit QtClient(std::shared_ptr<QtNetworkState> network) : network_(std::move(network)) {}
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
  Progress Reached() const override { return reached_; }

 private:
  void Begin(std::unique_ptr<QTcpSocket> socket) {
    Close();
    leaving_.reset();
    error_.clear();
    reached_ = kNowhere;
    stream_ = std::make_shared<QtStream>(network_, std::move(socket), this);
  }

  void NameFound() override { reached_ = kNameFound; }
  void ServerReached() override { reached_ = kServerReached; }

  void Connected() override {
    connected_ = true;
    reached_ = kReady;
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

  std::shared_ptr<QtNetworkState> network_;
  std::shared_ptr<QtStream> stream_;  // from Connect to the end
  std::weak_ptr<QtStream> leaving_;   // after Close: alive while it still sends
  bool connected_ = false;            // and told so
  Progress reached_ = kNowhere;
  State idleState_ = kClosed;  // while there is no stream
  std::string error_;
};

}  // namespace

QtNetwork::QtNetwork(QtLoop& loop) : state_(std::make_shared<QtNetworkState>(loop)) {}

// Leaving streams hold the state, so the state must let go of them.
QtNetwork::~QtNetwork() {
  const auto leaving = std::exchange(state_->leaving, {});
  const auto leavingConnections = std::exchange(state_->leavingConnections, {});
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
  return MakeSocketListener(state_);
}

std::shared_ptr<TcpClientControl> QtNetwork::MakeClient() {
  return std::make_shared<QtClient>(state_);
}

}  // namespace zeb
