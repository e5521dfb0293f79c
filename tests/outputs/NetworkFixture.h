// What tests of the outputs that speak HTTP share: a service with an item, and a scripted server.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "core/clsZEBService.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {

// A golden request as it was sent, line ends included.
inline std::string GoldenRequest(const std::string& name) {
  std::ifstream file(std::string(ZEB_TEST_DATA) + "/outputs/golden/" + name, std::ios::binary);
  EXPECT_TRUE(file) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

// Takes every connection on a port, keeps what arrives and when, and answers a request as scripted.
class ScriptedServer {
 public:
  ScriptedServer(TestEnvironment& t, std::uint16_t port) : t_(t), listener_(t.network.MakeListener()) {
    EXPECT_TRUE(listener_->Listen("", port));
    listener_->onConnection = [this](std::unique_ptr<TcpConnection> connection) {
      Accept(std::move(connection));
    };
  }

  // What it answers to a request in place of `answer`; set by tests that tell requests apart.
  std::function<std::string(const std::string& request)> answerTo;
  std::string answer = "HTTP/1.1 200 OK\r\n\r\n<message>Metadata update successful</message>";
  bool closeAtOnce = false, closeAfterRequest = false, endless = false;

  std::vector<std::string> requests;                  // one a connection
  std::vector<double> connectedAt, sentAt, closedAt;  // seconds since the test began

 private:
  double Seconds() const { return std::chrono::duration<double>(t_.loop.Monotonic() - begin_).count(); }

  void Accept(std::unique_ptr<TcpConnection> connection) {
    connectedAt.push_back(Seconds());
    if (closeAtOnce) return;
    TcpConnection* const raw = connection.get();
    const std::size_t index = requests.size();
    requests.emplace_back();
    raw->onData = [this, raw, index](std::string_view bytes) {
      requests[index] += bytes;
      sentAt.push_back(Seconds());
      raw->Send(answerTo ? answerTo(std::string(bytes)) : answer);
      if (endless) raw->Send(std::string(4u << 20, 'x'));
      if (closeAfterRequest) raw->Close();
    };
    raw->onClosed = [this] { closedAt.push_back(Seconds()); };
    connections_.push_back(std::move(connection));
  }

  TestEnvironment& t_;
  MonotonicTime begin_ = t_.loop.Monotonic();
  std::unique_ptr<TcpListener> listener_;
  std::vector<std::unique_ptr<TcpConnection>> connections_;
};

class NetworkOutputTest : public testing::Test {
 protected:
  NetworkOutputTest() { Play("Song & Dance", "Zoë"); }

  void Play(const std::string& title, const std::string& artist) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    item.Edit().Artists = artist;
    item.Edit().ItemType = 7;
    service.SetCurrentItem(item);
  }
  // How long it took, in seconds.
  double Update(clsZEBTemplate& output) { return Update(output, service.TakeSnapshot()); }
  double Update(clsZEBTemplate& output, const SnapshotPtr& snapshot) {
    const MonotonicTime begin = t.loop.Monotonic();
    MonotonicTime end = begin;
    EXPECT_TRUE(t.loop.RunTask([&] {
      output.PrepareOutput(snapshot);
      sent = output.UpdateOutput(snapshot);
      output.FinishOutput(snapshot);
      end = t.loop.Monotonic();
    }));
    t.loop.RunPosted();  // the server hears of the last close
    return std::chrono::duration<double>(end - begin).count();
  }
  static std::string StatusText(clsZEBTemplate& output) {
    std::uint32_t colour = 0;
    return output.GetStatusString(colour);
  }

  TestEnvironment t;
  ServiceEvents events;
  clsZEBService service{t.environment, nullptr, events};
  bool sent = false;  // by the last update
};

}  // namespace zeb
