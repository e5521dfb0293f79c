// HttpConnection: one peer of an HttpServer: its requests, one after the other, and their answers. Private to
// HttpServer, HttpReply and EventStream.
//
// Whatever the peer does, it holds a bounded part of memory for a bounded time: see the limits below.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "dashboard/HttpReply.h"
#include "dashboard/HttpWire.h"
#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

struct HttpLimits {
  static constexpr Duration kRequest = std::chrono::seconds(10);  // from its first byte to its last
  static constexpr Duration kFirst = std::chrono::seconds(10);    // until the first request begins
  static constexpr Duration kIdle = std::chrono::seconds(60);     // until the next one begins
  static constexpr Duration kHandler = std::chrono::seconds(30);
  static constexpr Duration kHeartbeat = std::chrono::seconds(15);
  static constexpr Duration kLinger = std::chrono::seconds(2);  // after a refusal, so that it is read
  // An answer is given so long to be taken, and a second more for each of these bytes.
  static constexpr Duration kTaking = std::chrono::seconds(10);
  static constexpr std::size_t kTakenPerSecond = 8 * 1024;
  static constexpr std::size_t kMostUnsent = 256 * 1024;  // above it the next request waits
  static constexpr std::size_t kMostUnreadEvents = 1024 * 1024;
};

class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
 public:
  // Who it works for: outlives it, or has called Drop.
  class Owner {
   public:
    virtual ~Owner() = default;
    virtual void Handle(const HttpRequest& request, const HttpReply& reply) = 0;
    virtual bool MayStream() = 0;
    virtual void Refused(const HttpConnection& connection, const std::string& why) = 0;
    virtual void Gone(HttpConnection& connection) = 0;  // the last call
  };
  enum class Phase { kIdle, kReading, kHandling, kStreaming, kClosing, kGone };

  HttpConnection(EventLoop& loop, Owner& owner, WayIn way, std::unique_ptr<TcpConnection> connection);
  void Begin();
  void Drop();  // at once, without a word

  Phase CurrentPhase() const { return phase_; }
  MonotonicTime Since() const { return since_; }  // when the phase began
  std::string PeerAddress() const { return peerAddress_; }
  std::size_t UnsentBytes() const { return connection_ ? connection_->UnsentBytes() : 0; }

  // `request` tells which: what comes too late is left out.
  void Answer(std::uint64_t request, const HttpAnswer& answer);
  bool BeginEvents(std::uint64_t request, std::function<bool()> still);
  void SendEvent(std::uint64_t request, std::string_view text);
  bool Streams(std::uint64_t request) const;
  void EndEvents(std::uint64_t request);

 private:
  void Enter(Phase phase, Duration limit, void (HttpConnection::*atLimit)());
  void Arrived(std::string_view bytes);
  void Advance();
  void AdvanceLater();
  void Refuse(const HttpAnswer& answer);
  void RequestTooSlow();
  void IdleTooLong();
  void HandlerTooSlow();
  void Send(const std::string& bytes);
  void WatchSending();
  void Leave();
  void Heartbeat();

  EventLoop& loop_;
  Owner& owner_;
  const WayIn way_;
  std::unique_ptr<TcpConnection> connection_;
  std::string peerAddress_;
  Phase phase_ = Phase::kIdle;
  MonotonicTime since_{};
  Timer limit_;    // of the phase
  Timer sending_;  // while bytes wait that the peer does not take
  MonotonicTime takenBy_{};
  std::string buffer_;  // of requests that are not read yet; one at most
  std::unique_ptr<HttpRequestReader> reader_;
  std::uint64_t request_ = 0;  // the number of the present one
  bool headOnly_ = false, keepAlive_ = true;
  bool overrun_ = false;  // more was sent than is kept: no further request
  bool advancePosted_ = false;
  std::function<bool()> still_;
  std::size_t unsentAtHeartbeat_ = 0;
};

}  // namespace zeb
