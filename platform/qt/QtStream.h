// QtStream: one Qt socket with its events in order: connected, bytes, end. Private to QtNetwork.
//
// Qt's signals only mark what has happened. A post to the loop then tells the user one thing at a time, so
// that nobody is called from inside a call of his own, bytes come before the end, and a peer that floods one
// socket gets no more than its turn.
#pragma once

#include <QObject>
#include <QTcpSocket>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/qt/DescriptorBudget.h"
#include "platform/qt/QtLoop.h"

namespace zeb {

class QtStream;

// What the sockets of one network share.
struct QtStreams {
  explicit QtStreams(QtLoop& givenLoop) : loop(givenLoop) {}
  QtLoop& loop;
  DescriptorBudget budget;
  std::set<std::shared_ptr<QtStream>> leaving;  // closed by their users, still sending
};

// Who uses a stream. May destroy itself in any of these.
class QtStreamUser {
 public:
  virtual ~QtStreamUser() = default;
  virtual void NameFound() = 0;      // perhaps from inside a call, as the next one: nothing but noted
  virtual void ServerReached() = 0;  // a connection stands; TLS does not yet
  virtual void Connected() = 0;
  virtual void Arrived(std::string_view bytes) = 0;
  virtual void Ended(const std::string& reason) = 0;  // "" when the peer closed in order; the last call
};

class QtStream : public std::enable_shared_from_this<QtStream> {
 public:
  QtStream(std::shared_ptr<QtStreams> shared, std::unique_ptr<QTcpSocket> socket, QtStreamUser* user);
  ~QtStream();

  enum class Security { kNone, kTls };
  void Connect(const std::string& host, std::uint16_t port, Security security);

  // Of a socket that somebody has connected to: bytes come from the next turn of the loop on.
  void TakeAccepted();

  bool Resolving() const { return resolving_; }
  void Send(std::string_view bytes);
  std::size_t Unsent() const;

  // Its user hears nothing more. What was sent still goes out, for a while.
  void Finish();
  // Its user hears nothing more, and what was not sent is dropped.
  void Abort();

 private:
  void Watch();
  bool TakePlace();
  void LookUp(const std::string& name);
  void TryNextAddress();
  // Whether there is another address, which is then tried after the present event.
  bool HasNextAddress();
  void PostPump();
  void Pump();
  void End(const std::string& reason);
  void Leave();

  std::shared_ptr<QtStreams> shared_;
  std::unique_ptr<QTcpSocket> socket_;
  QtStreamUser* user_;
  std::string target_;  // "host:port"
  QString peerName_;    // as the certificate must name it
  std::uint16_t port_ = 0;
  Security security_ = Security::kNone;
  bool hasPlace_ = false;  // of the budget
  bool resolving_ = false;
  std::deque<std::string> addresses_;  // not tried yet
  bool connected_ = false;
  bool tellConnected_ = false;
  bool pumpPosted_ = false;
  std::optional<std::string> ended_;
  std::string certificateProblem_;
  Timer leaveLimit_;
  // Qt drops the connections to it when it goes, which is before the socket goes.
  QObject context_;
};

}  // namespace zeb
