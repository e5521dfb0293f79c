// LocalStream: one connected Unix domain socket as a TcpConnection. Private to QtLocalSockets.
#pragma once

#include <QSocketNotifier>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "platform/EventLoop.h"
#include "platform/LocalSockets.h"

namespace zeb {

class LocalStream;

// What the sockets share.
struct LocalStreams {
  explicit LocalStreams(EventLoop& givenLoop) : loop(givenLoop) {}
  EventLoop& loop;
  std::set<std::shared_ptr<LocalStream>> leaving;  // closed by their users, still sending
};

// Takes the descriptor over. Bytes are read from the next turn of the loop on, 64 KiB a turn.
std::unique_ptr<TcpConnection> MakeLocalConnection(std::shared_ptr<LocalStreams> shared, int descriptor);

class LocalStream : public std::enable_shared_from_this<LocalStream> {
 public:
  LocalStream(std::shared_ptr<LocalStreams> shared, int descriptor, TcpConnection* user);
  ~LocalStream();
  LocalStream(const LocalStream&) = delete;
  LocalStream& operator=(const LocalStream&) = delete;

  void Begin();
  void Send(std::string_view bytes);
  std::size_t Unsent() const { return unsent_.size() - sent_; }
  void Finish();   // its user hears nothing more; what was sent still goes out, for a while
  void Abandon();  // its user goes: it closes at once, unless it was finished before

 private:
  void Read();
  void Write();
  void End();
  void CloseNow();

  std::shared_ptr<LocalStreams> shared_;
  int descriptor_;
  TcpConnection* user_;
  std::string unsent_;
  std::size_t sent_ = 0;  // the beginning of `unsent_` that is gone already
  bool broken_ = false;   // whoever reads hears of it, behind what is still to be read
  std::unique_ptr<QSocketNotifier> reader_, writer_;
  Timer leaveLimit_;
};

}  // namespace zeb
