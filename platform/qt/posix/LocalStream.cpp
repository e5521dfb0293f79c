#include "platform/qt/posix/LocalStream.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <utility>

namespace zeb {

namespace {

constexpr std::size_t kPieceBytes = 64 * 1024;
constexpr Duration kLeaveLimit = std::chrono::seconds(10);

bool MeansLater(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

class LocalConnection : public TcpConnection {
 public:
  LocalConnection(std::shared_ptr<LocalStreams> shared, int descriptor)
      : stream_(std::make_shared<LocalStream>(std::move(shared), descriptor, this)) {
    stream_->Begin();
  }
  ~LocalConnection() override { stream_->Abandon(); }

  void Send(std::string_view bytes) override { stream_->Send(bytes); }
  std::size_t UnsentBytes() const override { return stream_->Unsent(); }
  void Close() override { stream_->Finish(); }
  std::string PeerAddress() const override { return kLocalPeer; }
  std::uint16_t PeerPort() const override { return 0; }

 private:
  std::shared_ptr<LocalStream> stream_;
};

// A notifier must not be destroyed by what it calls.
void Drop(std::unique_ptr<QSocketNotifier>& notifier) {
  if (!notifier) return;
  notifier->setEnabled(false);
  notifier.release()->deleteLater();
}

}  // namespace

std::unique_ptr<TcpConnection> MakeLocalConnection(std::shared_ptr<LocalStreams> shared, int descriptor) {
  return std::make_unique<LocalConnection>(std::move(shared), descriptor);
}

LocalStream::LocalStream(std::shared_ptr<LocalStreams> shared, int descriptor, TcpConnection* user)
    : shared_(std::move(shared)), descriptor_(descriptor), user_(user) {}

LocalStream::~LocalStream() {
  CloseNow();
}

void LocalStream::Begin() {
  reader_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  QObject::connect(reader_.get(), &QSocketNotifier::activated, reader_.get(), [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Read();
  });
}

void LocalStream::Send(std::string_view bytes) {
  if (descriptor_ < 0 || broken_ || !user_) return;
  unsent_ += bytes;
  if (!writer_) Write();
}

// The buffer is on the heap: a task's stack is small, and who is called may run one.
void LocalStream::Read() {
  if (descriptor_ < 0) return;
  std::string piece(kPieceBytes, '\0');
  const ssize_t got = recv(descriptor_, piece.data(), piece.size(), 0);
  if (got < 0 && MeansLater(errno)) return;
  if (got <= 0) return End();
  piece.resize(static_cast<std::size_t>(got));
  if (!user_) return;
  if (const auto callback = user_->onData) callback(piece);
}

void LocalStream::Write() {
  while (Unsent() > 0) {
    const ssize_t count = send(descriptor_, unsent_.data() + sent_, Unsent(), MSG_NOSIGNAL);
    if (count < 0 && MeansLater(errno)) {
      if (sent_ > unsent_.size() / 2) unsent_.erase(0, std::exchange(sent_, 0));
      if (writer_) return;
      writer_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Write);
      QObject::connect(writer_.get(), &QSocketNotifier::activated, writer_.get(), [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->Write();
      });
      return;
    }
    if (count < 0) {
      broken_ = true;
      break;
    }
    sent_ += static_cast<std::size_t>(count);
  }
  unsent_.clear();
  sent_ = 0;
  Drop(writer_);
  if (!user_) {
    const auto keep = shared_from_this();
    CloseNow();
    shared_->leaving.erase(keep);
  }
}

void LocalStream::End() {
  CloseNow();
  TcpConnection* const user = std::exchange(user_, nullptr);
  if (!user) return;
  if (const auto callback = user->onClosed) callback();
}

void LocalStream::Finish() {
  user_ = nullptr;
  if (descriptor_ < 0) return;
  Drop(reader_);
  // A socket closed with bytes unread resets the connection, and the peer loses what was sent to it last.
  std::array<char, 4096> dropped;
  for (int left = 256; left > 0; --left)
    if (recv(descriptor_, dropped.data(), dropped.size(), 0) <= 0) break;
  if (Unsent() == 0) return CloseNow();
  shared_->leaving.insert(shared_from_this());
  leaveLimit_ = shared_->loop.After(kLeaveLimit, [weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self) return;
    self->CloseNow();
    self->shared_->leaving.erase(self);
  });
}

void LocalStream::Abandon() {
  if (std::exchange(user_, nullptr)) CloseNow();
}

void LocalStream::CloseNow() {
  Drop(reader_);
  Drop(writer_);
  leaveLimit_.Stop();
  unsent_.clear();
  sent_ = 0;
  if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
}

}  // namespace zeb
