#include "tests/net/FtpRelay.h"

namespace zeb {

// One client at a time, as an output has one connection.
FtpRelay::FtpRelay(int serverPort) : serverPort_(serverPort), thread_([this] { Serve(); }) {}

FtpRelay::~FtpRelay() {
  ends_ = true;
  thread_.join();
}

std::vector<std::string> FtpRelay::Commands() const {
  const std::lock_guard lock(mutex_);
  return commands_;
}

void FtpRelay::Serve() {
  while (!ends_)
    if (Socket client = listener_.Accept(20); client.Valid()) {
      ++connections_;
      ServeOne(std::move(client));
    }
}

void FtpRelay::ServeOne(Socket client) {
  const Socket server = Socket::Connect(serverPort_);
  std::string fromClient, fromServer;
  Manner manner = Manner::kPassOn;
  while (!ends_) {
    const bool clientSaid = client.Receive(fromClient, 2);
    if (!clientSaid && client.Ended()) return;
    for (std::size_t end = fromClient.find("\r\n"); end != std::string::npos; end = fromClient.find("\r\n")) {
      const std::string command = fromClient.substr(0, end);
      fromClient.erase(0, end + 2);
      {
        const std::lock_guard lock(mutex_);
        commands_.push_back(command);
      }
      if (manner == Manner::kPassOn && answerTo) manner = answerTo(command);
      if (!server.Send(command + "\r\n")) return;
    }
    const bool serverSaid = server.Receive(fromServer, 2);
    if (!serverSaid && server.Ended()) return;
    if (fromServer.empty()) continue;
    if (manner == Manner::kBreakOff) return;
    if (manner == Manner::kPassOn && !client.Send(fromServer)) return;
    fromServer.clear();
  }
}

}  // namespace zeb
