// A client of the simulated network for tests: its answers, read as they come.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dashboard/HttpWire.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {

struct ReadAnswer {
  int status = 0;
  std::string body, cookie, allow;
};

struct HttpClient {
  std::shared_ptr<TcpClientControl> control;
  std::string received;
  bool closed = false;

  HttpClient(SimulatedNetwork& network, std::uint16_t port) : control(network.MakeClient()) {
    control->onData = [this](std::string_view bytes) { received += bytes; };
    control->onClosed = [this] { closed = true; };
    control->Connect("station", port);
  }
  void Send(const std::string& bytes) { control->SendData(bytes); }

  // The answers that have come whole.
  std::vector<ReadAnswer> Answers() const {
    std::vector<ReadAnswer> answers;
    std::string_view rest = received;
    while (!rest.empty()) {
      HttpAnswerReader reader;
      std::size_t used = 0;
      while (used < rest.size() && !reader.Done())
        if (!reader.Take(rest.substr(used++, 1))) return answers;
      if (!reader.Done()) return answers;
      answers.push_back(
          {reader.Status(), reader.TakeBody(), reader.Header("set-cookie"), reader.Header("allow")});
      rest.remove_prefix(used);
    }
    return answers;
  }
  int Status() const {
    const auto answers = Answers();
    return answers.empty() ? 0 : answers.back().status;
  }
};

inline std::string Get(const std::string& target, const std::string& more = "") {
  return "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:6980\r\n" + more + "\r\n";
}

inline std::string Post(const std::string& target, const std::string& body, const std::string& more = "") {
  return "POST " + target +
         " HTTP/1.1\r\nHost: 127.0.0.1:6980\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
         more + "\r\n" + body;
}

}  // namespace zeb
