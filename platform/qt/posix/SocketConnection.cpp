#include "platform/qt/posix/SocketConnection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <utility>

#include "platform/qt/QtLoop.h"
#include "platform/qt/QtNetworkState.h"
#include "platform/qt/SocketOptions.h"
#include "platform/qt/posix/DescriptorWatch.h"

namespace zeb {

namespace {

constexpr std::size_t kPieceBytes = 64 * 1024;
constexpr std::size_t kMostDropped = 1024 * 1024;  // of what a peer has sent to a connection that is closed
// How long a closed connection goes on sending to a peer that hardly reads.
constexpr Duration kLeaveLimit = std::chrono::seconds(10);

bool MeansLater(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

// The socket itself, which may outlive the connection while it still sends.
class SocketConnection::Stream : public std::enable_shared_from_this<Stream> {
 public:
  Stream(std::shared_ptr<QtNetworkState> network, int descriptor, SocketConnection* user, Place place)
      : network_(std::move(network)), descriptor_(descriptor), user_(user), place_(std::move(place)) {}
  ~Stream() { CloseNow(); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  void Begin() {
    reader_ = std::make_unique<DescriptorWatch>(network_->loop, descriptor_, DescriptorWatch::kRead,
                                                [weak = weak_from_this()] {
                                                  if (const auto self = weak.lock()) self->Read();
                                                });
  }

  void Send(std::string_view bytes) {
    if (descriptor_ < 0 || broken_) return;
    const bool waits = !unsent_.empty();
    unsent_ += bytes;
    if (!waits) Write();
  }
  std::size_t Unsent() const { return unsent_.size() - sent_; }

  // Its user goes. What it closed before goes on leaving.
  void Abandon() {
    if (std::exchange(user_, nullptr)) CloseNow();
  }

  void Finish() {
    user_ = nullptr;
    if (descriptor_ < 0) return;
    reader_.reset();
    // A socket closed with bytes unread resets the connection, and the peer loses what was sent to it last.
    std::array<char, 4096> dropped;
    for (std::size_t left = kMostDropped / dropped.size(); left > 0; --left)
      if (recv(descriptor_, dropped.data(), dropped.size(), 0) <= 0) break;
    if (Unsent() == 0) return CloseNow();
    network_->leavingConnections.insert(shared_from_this());
    leaveLimit_ = network_->loop.After(kLeaveLimit, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->Leave();
    });
  }

  void CloseNow() {
    reader_.reset();
    writer_.reset();
    leaveLimit_.Stop();
    unsent_.clear();
    sent_ = 0;
    if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    place_.reset();
  }

 private:
  // The buffer is the network's, lent for as long as the user looks at it.
  void Read() {
    std::string piece = std::exchange(network_->piece, {});
    piece.resize(kPieceBytes);
    const ssize_t got = recv(descriptor_, piece.data(), piece.size(), 0);
    const bool later = got < 0 && MeansLater(errno);
    if (got > 0) {
      if (const auto callback = user_->onData) callback({piece.data(), static_cast<std::size_t>(got)});
    }
    network_->piece = std::move(piece);
    if (got <= 0 && !later) End();
  }

  void Write() {
    while (Unsent() > 0) {
      const ssize_t count = send(descriptor_, unsent_.data() + sent_, Unsent(), MSG_NOSIGNAL);
      if (count < 0 && MeansLater(errno)) return WriteLater();
      if (count < 0) {
        broken_ = true;  // whoever reads hears of it, behind what is still to be read
        break;
      }
      sent_ += static_cast<std::size_t>(count);
    }
    unsent_.clear();
    sent_ = 0;
    writer_.reset();
    if (!user_) Leave();
  }

  void WriteLater() {
    if (sent_ > unsent_.size() / 2) unsent_.erase(0, std::exchange(sent_, 0));
    if (writer_) return;
    writer_ = std::make_unique<DescriptorWatch>(network_->loop, descriptor_, DescriptorWatch::kWrite,
                                                [weak = weak_from_this()] {
                                                  if (const auto self = weak.lock()) self->Write();
                                                });
  }

  void End() {
    CloseNow();
    SocketConnection* const user = std::exchange(user_, nullptr);
    if (!user) return;  // gone while it looked at the last bytes
    if (const auto callback = user->onClosed) callback();
  }

  void Leave() {
    const auto keep = shared_from_this();
    CloseNow();
    network_->leavingConnections.erase(keep);
  }

  std::shared_ptr<QtNetworkState> network_;
  int descriptor_;
  SocketConnection* user_;
  Place place_;
  std::string unsent_;
  std::size_t sent_ = 0;  // the beginning of `unsent_` that is gone already
  bool broken_ = false;
  std::unique_ptr<DescriptorWatch> reader_, writer_;
  Timer leaveLimit_;
};

SocketConnection::SocketConnection(std::shared_ptr<QtNetworkState> network, int descriptor, Peer peer,
                                   Place place)
    : peer_(std::move(peer)),
      stream_(std::make_shared<Stream>(std::move(network), descriptor, this, std::move(place))) {
  TuneSocket(descriptor);
  stream_->Begin();
}

SocketConnection::~SocketConnection() {
  stream_->Abandon();
}

void SocketConnection::Send(std::string_view bytes) {
  stream_->Send(bytes);
}

std::size_t SocketConnection::UnsentBytes() const {
  return stream_->Unsent();
}

void SocketConnection::Close() {
  stream_->Finish();
}

}  // namespace zeb
