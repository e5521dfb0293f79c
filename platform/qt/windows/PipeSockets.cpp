#include "platform/qt/windows/PipeSockets.h"

#include <QCryptographicHash>
#include <QLocalServer>
#include <QLocalSocket>
#include <QString>
#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

namespace zeb {
namespace {

constexpr qint64 kPieceBytes = 64 * 1024;
constexpr Duration kLeaveLimit = std::chrono::seconds(10);
// A pipe that exists answers at once, or all of its ends are taken.
constexpr int kConnectMilliseconds = 200;

// Paths differ in case and separators and are the same all the same.
QString PipeName(const std::string& path) {
  const QString same = QString::fromStdString(path).replace('/', '\\').toLower();
  return "zeb-" + QCryptographicHash::hash(same.toUtf8(), QCryptographicHash::Sha256).toHex().left(32);
}

}  // namespace

class PipeStream;
struct PipeStreams {
  explicit PipeStreams(EventLoop& given) : loop(given) {}
  EventLoop& loop;
  std::set<std::shared_ptr<PipeStream>> leaving;  // closed by their users, still sending
};

// One end of a pipe. Qt's signals only post, so that nobody is called from inside a call of his own.
class PipeStream : public std::enable_shared_from_this<PipeStream> {
 public:
  PipeStream(std::shared_ptr<PipeStreams> shared, std::unique_ptr<QLocalSocket> socket, TcpConnection* user)
      : shared_(std::move(shared)), socket_(std::move(socket)), user_(user) {}

  // The user hears from the next turn of the loop on, so he has to be there: what came before he was is lost.
  void Begin() {
    socket_->setReadBufferSize(kPieceBytes);
    const auto post = [this] { PostPump(); };
    QObject::connect(socket_.get(), &QLocalSocket::readyRead, socket_.get(), post);
    QObject::connect(socket_.get(), &QLocalSocket::disconnected, socket_.get(), post);
    QObject::connect(socket_.get(), &QLocalSocket::bytesWritten, socket_.get(), post);
    PostPump();
  }
  void Send(std::string_view bytes) {
    if (user_ && IsOpen()) socket_->write(bytes.data(), static_cast<qint64>(bytes.size()));
  }
  std::size_t Unsent() const {
    return static_cast<std::size_t>(std::max<qint64>(socket_->bytesToWrite(), 0));
  }

  void Finish() {
    user_ = nullptr;
    socket_->readAll();
    if (!IsOpen() || Unsent() == 0) return socket_->abort();
    shared_->leaving.insert(shared_from_this());
    leaveLimit_ = shared_->loop.After(kLeaveLimit, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->Leave();
    });
  }
  void Abandon() {
    if (std::exchange(user_, nullptr)) socket_->abort();
  }

 private:
  bool IsOpen() const { return socket_->state() == QLocalSocket::ConnectedState; }

  void PostPump() {
    if (std::exchange(pumpPosted_, true)) return;
    shared_->loop.Post([weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->Pump();
    });
  }

  // Tells the user one thing; more is told by a further post.
  void Pump() {
    pumpPosted_ = false;
    if (!user_) {
      if (!IsOpen() || Unsent() == 0) Leave();
      return;
    }
    if (socket_->bytesAvailable() > 0) {
      const QByteArray piece = socket_->read(kPieceBytes);
      PostPump();
      if (const auto callback = user_->onData)
        callback({piece.data(), static_cast<std::size_t>(piece.size())});
      return;
    }
    if (IsOpen()) return;
    TcpConnection* const user = std::exchange(user_, nullptr);
    if (const auto callback = user->onClosed) callback();
  }

  void Leave() {
    leaveLimit_.Stop();
    const auto keep = shared_from_this();
    socket_->abort();
    shared_->leaving.erase(keep);
  }

  std::shared_ptr<PipeStreams> shared_;
  std::unique_ptr<QLocalSocket> socket_;
  TcpConnection* user_;
  bool pumpPosted_ = false;
  Timer leaveLimit_;
};

namespace {

class PipeConnection : public TcpConnection {
 public:
  PipeConnection(std::shared_ptr<PipeStreams> shared, std::unique_ptr<QLocalSocket> socket)
      : stream_(std::make_shared<PipeStream>(std::move(shared), std::move(socket), this)) {}
  ~PipeConnection() override { stream_->Abandon(); }

  void Begin() { stream_->Begin(); }

  void Send(std::string_view bytes) override { stream_->Send(bytes); }
  std::size_t UnsentBytes() const override { return stream_->Unsent(); }
  void Close() override { stream_->Finish(); }
  std::string PeerAddress() const override { return kLocalPeer; }
  std::uint16_t PeerPort() const override { return 0; }

 private:
  std::shared_ptr<PipeStream> stream_;
};

class PipeListener : public LocalListener {
 public:
  explicit PipeListener(std::shared_ptr<PipeStreams> streams) : streams_(std::move(streams)) {}

  Outcome Listen(const std::string& path) override {
    Close();
    path_ = path;
    auto server = std::make_shared<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    // Windows lets several programs listen under one name; only the first one is meant.
    QLocalSocket probe;
    probe.connectToServer(PipeName(path));
    if (probe.waitForConnected(kConnectMilliseconds))
      return Failure{"cannot listen on '" + path + "': another program does"};
    if (!server->listen(PipeName(path)))
      return Failure{"cannot listen on '" + path + "': " + server->errorString().simplified().toStdString()};
    QObject::connect(server.get(), &QLocalServer::newConnection, server.get(), [this] { TakeConnections(); });
    server_ = std::move(server);
    return {};
  }

  Outcome AdmitGroup(const std::string& group) override {
    return Failure{"cannot admit the group '" + group + "' to '" + path_ +
                   "': Windows' pipes are their user's alone"};
  }

  void Close() override {
    if (!server_) return;
    server_->close();
    // It may be what calls.
    streams_->loop.Post([gone = std::exchange(server_, nullptr)] {});
  }

 private:
  void TakeConnections() {
    while (QLocalSocket* const socket = server_->nextPendingConnection()) {
      socket->setParent(nullptr);
      auto connection = std::make_shared<std::unique_ptr<PipeConnection>>(
          std::make_unique<PipeConnection>(streams_, std::unique_ptr<QLocalSocket>(socket)));
      streams_->loop.Post([this, server = std::weak_ptr(server_), connection] {
        if (server.expired() || !server_) return;
        (*connection)->Begin();
        if (const auto callback = onConnection) callback(std::move(*connection));
      });
    }
  }

  std::shared_ptr<PipeStreams> streams_;
  std::shared_ptr<QLocalServer> server_;
  std::string path_;
};

}  // namespace

PipeSockets::PipeSockets(EventLoop& loop) : streams_(std::make_shared<PipeStreams>(loop)) {}

// Leaving streams hold what they share, so that must let go of them.
PipeSockets::~PipeSockets() {
  const auto leaving = std::exchange(streams_->leaving, {});
}

std::unique_ptr<LocalListener> PipeSockets::MakeLocalListener() {
  return std::make_unique<PipeListener>(streams_);
}

LocalLink PipeSockets::ConnectLocal(const std::string& path) {
  auto socket = std::make_unique<QLocalSocket>();
  socket->connectToServer(PipeName(path));
  if (socket->waitForConnected(kConnectMilliseconds)) {
    auto connection = std::make_unique<PipeConnection>(streams_, std::move(socket));
    connection->Begin();
    return {std::move(connection), false, ""};
  }
  const auto error = socket->error();
  return {nullptr,
          error == QLocalSocket::ServerNotFoundError || error == QLocalSocket::ConnectionRefusedError,
          "cannot connect to '" + path + "': " + socket->errorString().simplified().toStdString()};
}

}  // namespace zeb
