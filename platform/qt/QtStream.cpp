#include "platform/qt/QtStream.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QSslError>
#include <QSslSocket>
#include <QUrl>
#include <algorithm>
#include <utility>

#include "platform/qt/HostLookUp.h"
#include "platform/qt/SocketOptions.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr qint64 kPieceBytes = 64 * 1024;
// How long a closed stream goes on sending to a peer that hardly reads.
constexpr Duration kLeaveLimit = 10s;
// Another address of the same host may do.
bool IsAboutOneAddress(QAbstractSocket::SocketError error) {
  return error == QAbstractSocket::ConnectionRefusedError || error == QAbstractSocket::NetworkError ||
         error == QAbstractSocket::SocketTimeoutError;
}

std::string OneLine(const QString& text) {
  return text.simplified().toStdString();
}

}  // namespace

QtStream::QtStream(std::shared_ptr<QtStreams> shared, std::unique_ptr<QTcpSocket> socket, QtStreamUser* user)
    : shared_(std::move(shared)), socket_(std::move(socket)), user_(user) {
  socket_->setReadBufferSize(kPieceBytes);
  Watch();
}

QtStream::~QtStream() {
  if (hasPlace_) shared_->budget.GiveBack(1);
}

void QtStream::Watch() {
  QTcpSocket* socket = socket_.get();
  QObject::connect(socket, &QTcpSocket::readyRead, &context_, [this] { PostPump(); });
  QObject::connect(socket, &QTcpSocket::errorOccurred, &context_, [this](QAbstractSocket::SocketError error) {
    if (error == QAbstractSocket::RemoteHostClosedError && connected_) {
      // A reset looks the same to Qt; what tells it from an orderly end is that bytes are left over.
      if (Unsent() == 0) return End("");
      return End("lost the connection to " + target_ + ": closed before all was sent");
    }
    if (!connected_ && IsAboutOneAddress(error) && HasNextAddress()) return;
    const std::string problem =
        certificateProblem_.empty() ? OneLine(socket_->errorString()) : certificateProblem_;
    End((connected_ ? "lost the connection to " : "cannot connect to ") + target_ + ": " + problem);
  });
  QObject::connect(socket, &QTcpSocket::connected, &context_, [this] {
    addresses_.clear();
    if (user_) user_->ServerReached();
  });
  QObject::connect(socket, &QTcpSocket::disconnected, &context_, [this] { End(""); });
}

void QtStream::Connect(const std::string& host, std::uint16_t port, Security security) {
  target_ = host + ":" + std::to_string(port);
  port_ = port;
  security_ = security;
  if (!TakePlace()) return End("cannot connect to " + target_ + ": " + shared_->budget.Reason());
  const auto whenConnected = [this] {
    TuneSocket(static_cast<int>(socket_->socketDescriptor()));
    connected_ = tellConnected_ = true;
    PostPump();
  };
  socket_->setProxy(QNetworkProxy::NoProxy);
  if (security == Security::kNone) {
    QObject::connect(socket_.get(), &QTcpSocket::connected, &context_, whenConnected);
  } else {
    auto* secure = static_cast<QSslSocket*>(socket_.get());
    QObject::connect(secure, &QSslSocket::encrypted, &context_, whenConnected);
    QObject::connect(secure, &QSslSocket::sslErrors, &context_, [this](const QList<QSslError>& errors) {
      certificateProblem_ = OneLine(errors.front().errorString());
    });
  }
  // A literal IPv6 address may come in brackets, as in a URL.
  const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  const std::string name = bracketed ? host.substr(1, host.size() - 2) : host;
  peerName_ = QString::fromStdString(name);
  if (!QHostAddress().setAddress(peerName_)) return LookUp(name);
  addresses_ = {name};
  TryNextAddress();
}

void QtStream::TakeAccepted() {
  target_ = socket_->peerAddress().toString().toStdString() + ":" + std::to_string(socket_->peerPort());
  connected_ = true;
  TuneSocket(static_cast<int>(socket_->socketDescriptor()));
  if (socket_->state() != QAbstractSocket::ConnectedState) return End("");
  PostPump();
}

bool QtStream::TakePlace() {
  hasPlace_ = shared_->budget.AllowsClient();
  if (hasPlace_) shared_->budget.Take(1);
  return hasPlace_;
}

// Names that nobody waits for any more are passed over, so that they do not pile up behind servers that hang.
void QtStream::LookUp(const std::string& name) {
  resolving_ = true;
  const auto found = std::make_shared<HostAddresses>();
  // Name servers know names of other scripts by an ASCII form.
  const QByteArray ascii = QUrl::toAce(peerName_);
  const auto wanted = [found, name = ascii.isEmpty() ? name : ascii.toStdString(), weak = weak_from_this()] {
    if (!weak.expired()) *found = LookUpHost(name);
  };
  shared_->loop.LookUp(wanted, [found, weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self || !self->user_) return;
    self->resolving_ = false;
    self->addresses_.assign(found->addresses.begin(), found->addresses.end());
    if (!self->addresses_.empty()) return self->TryNextAddress();
    self->End("cannot connect to " + self->target_ + ": " + found->problem);
  });
}

void QtStream::TryNextAddress() {
  if (user_) user_->NameFound();
  const QString address = QString::fromStdString(addresses_.front());
  addresses_.pop_front();
  if (security_ == Security::kNone) return socket_->connectToHost(address, port_);
  static_cast<QSslSocket*>(socket_.get())->connectToHostEncrypted(address, port_, peerName_);
}

bool QtStream::HasNextAddress() {
  if (addresses_.empty()) return false;
  shared_->loop.Post([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self || !self->user_ || self->ended_) return;
    self->socket_->abort();
    self->TryNextAddress();
  });
  return true;
}

void QtStream::Send(std::string_view bytes) {
  if (!connected_ || ended_) return;
  socket_->write(bytes.data(), static_cast<qint64>(bytes.size()));
}

std::size_t QtStream::Unsent() const {
  qint64 unsent = socket_->bytesToWrite();
  if (const auto* secure = dynamic_cast<const QSslSocket*>(socket_.get())) {
    unsent += secure->encryptedBytesToWrite();
  }
  return static_cast<std::size_t>(std::max<qint64>(unsent, 0));
}

void QtStream::End(const std::string& reason) {
  if (ended_) return;
  ended_ = reason;
  PostPump();
}

void QtStream::PostPump() {
  if (pumpPosted_) return;
  pumpPosted_ = true;
  shared_->loop.Post([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Pump();
  });
}

// Tells the user one thing. More is told by a further post.
void QtStream::Pump() {
  pumpPosted_ = false;
  if (!user_) {
    if (ended_) Leave();
    return;
  }
  if (!connected_ && !ended_) return;
  if (std::exchange(tellConnected_, false)) {
    PostPump();
    return user_->Connected();
  }
  if (const qint64 waiting = std::min(socket_->bytesAvailable(), kPieceBytes); connected_ && waiting > 0) {
    std::string bytes(static_cast<std::size_t>(waiting), '\0');
    const qint64 got = socket_->read(bytes.data(), waiting);
    bytes.resize(static_cast<std::size_t>(std::max<qint64>(got, 0)));
    if (!bytes.empty()) {
      PostPump();
      return user_->Arrived(bytes);
    }
  }
  if (ended_) std::exchange(user_, nullptr)->Ended(*ended_);
}

void QtStream::Finish() {
  user_ = nullptr;
  if (ended_ || !connected_) return socket_->abort();
  // A socket closed with bytes unread resets the connection, and the peer loses what was sent to it last.
  socket_->setReadBufferSize(0);
  socket_->readAll();
  socket_->flush();
  shared_->leaving.insert(shared_from_this());
  leaveLimit_ = shared_->loop.After(kLeaveLimit, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Leave();
  });
  socket_->disconnectFromHost();
}

void QtStream::Abort() {
  user_ = nullptr;
  socket_->abort();
}

void QtStream::Leave() {
  leaveLimit_.Stop();
  socket_->abort();
  shared_->leaving.erase(shared_from_this());
}

}  // namespace zeb
