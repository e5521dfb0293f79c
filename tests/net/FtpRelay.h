// FtpRelay: stands between an FTP client and a server on loopback: counts the connections, keeps the
// commands, and can swallow an answer and break off, or fall silent. Data connections do not go through it.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/net/Sockets.h"

namespace zeb {

class FtpRelay {
 public:
  explicit FtpRelay(int serverPort);
  ~FtpRelay();
  int Port() const { return port_; }
  int Connections() const { return connections_; }
  std::vector<std::string> Commands() const;

  enum class Manner { kPassOn, kBreakOff, kFallSilent };
  // What becomes of the answer to a command; the command itself reaches the server. Set before the client
  // connects; called on the relay's thread.
  std::function<Manner(const std::string& command)> answerTo;

 private:
  void Serve();
  void ServeOne(Socket client);

  Socket listener_ = Socket::Listen();
  const int port_ = listener_.Port(), serverPort_;
  std::atomic<int> connections_ = 0;
  std::atomic<bool> ends_ = false;
  mutable std::mutex mutex_;  // guards commands_
  std::vector<std::string> commands_;
  std::thread thread_;
};

}  // namespace zeb
