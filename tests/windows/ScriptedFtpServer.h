// An FTP server of the test's own: serves one client, and from some reply on breaks off or falls silent.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "tests/windows/LoopbackSocket.h"

namespace zeb {

class ScriptedFtpServer {
 public:
  enum class Then { kBreaksOff, kFallsSilent };
  struct Script {
    int replies = 1000;  // that are given; then:
    Then then = Then::kBreaksOff;
    std::string silentAt;                        // this command is never answered
    std::map<std::string, std::string> answers;  // to a command, in place of the usual one
    std::string stored = "226 stored";
    std::string listed;                                         // what every folder holds, in lines
    bool takesNothing = false;                                  // what is uploaded is not read
    std::function<void(const std::string& command)> onCommand;  // on the server's thread
  };

  explicit ScriptedFtpServer(Script script) : script_(std::move(script)), thread_([this] { Serve(); }) {}
  ~ScriptedFtpServer() {
    ends_ = true;
    thread_.join();
  }
  int Port() const { return port_; }
  std::string Uploaded() const {
    const std::lock_guard lock(mutex_);
    return uploaded_;
  }

 private:
  bool Reply(const std::string& text) {
    if (script_.replies-- > 0) return peer_.Send(text + "\r\n");
    if (script_.then == Then::kFallsSilent) return false;  // the destructor closes
    peer_.Close();
    return false;
  }
  bool ReceiveLine(std::string& received) {
    while (!ends_ && received.find("\r\n") == std::string::npos)
      if (!peer_.Receive(received, 50) && peer_.Ended()) return false;
    return !ends_;
  }
  std::string PassiveAnswer(bool extended) const {
    const int port = data_.Port();
    if (extended) return "229 here (|||" + std::to_string(port) + "|)";
    return "227 here (127,0,0,1," + std::to_string(port / 256) + "," + std::to_string(port % 256) + ")";
  }
  std::string UsualAnswer(const std::string& command) const {
    static const std::map<std::string, std::string> usual = {
        {"USER", "331 password"}, {"PASS", "230 welcome"}, {"PWD", "257 \"/\" it is"},
        {"RNFR", "350 to where"}, {"RNTO", "250 moved"},   {"CWD", "250 there"},
        {"DELE", "250 deleted"}};
    if (command == "PASV" || command == "EPSV") return PassiveAnswer(command == "EPSV");
    const auto found = usual.find(command);
    return found == usual.end() ? "200 fine" : found->second;
  }
  bool Store() {
    const LoopbackSocket sender = data_.Accept(3000);
    if (!Reply("150 go on")) return false;
    std::string bytes;
    while (!ends_ && script_.takesNothing) peer_.Receive(bytes, 50);
    while (!ends_ && !sender.Ended()) sender.Receive(bytes, 50);
    const std::lock_guard lock(mutex_);
    uploaded_ = bytes;
    return true;
  }
  bool List() {
    const LoopbackSocket reader = data_.Accept(3000);
    return Reply("150 here it is") && reader.Send(script_.listed);
  }
  void Serve() {
    while (!ends_ && !peer_.Valid()) peer_ = listener_.Accept(50);
    if (ends_ || !Reply("220 ready")) return;
    std::string received;
    while (ReceiveLine(received)) {
      const std::size_t end = received.find("\r\n");
      const std::string command = received.substr(0, std::min(received.find(' '), end));
      received.erase(0, end + 2);
      if (script_.onCommand) script_.onCommand(command);
      if (command == script_.silentAt) return;
      const auto given = script_.answers.find(command);
      std::string answer = given == script_.answers.end() ? UsualAnswer(command) : given->second;
      if (command == "STOR" && given == script_.answers.end()) {
        if (!Store()) return;
        answer = script_.stored;
      }
      if (command == "LIST" || command == "NLST") {
        if (!List()) return;
        answer = "226 listed";
      }
      if (!Reply(answer)) return;
    }
  }

  LoopbackSocket listener_ = LoopbackSocket::Listen(), data_ = LoopbackSocket::Listen();
  LoopbackSocket peer_;
  const int port_ = listener_.Port();
  Script script_;
  std::atomic<bool> ends_ = false;
  mutable std::mutex mutex_;  // guards uploaded_
  std::string uploaded_;
  std::thread thread_;
};

}  // namespace zeb
