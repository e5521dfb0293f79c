// HttpServer: the peers that came in one way, at most 64 at a time, and who handles their requests.
//
// When all places are taken, one that waits for nothing, or that has been sending its request for more than a
// second, makes room for the next.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dashboard/HttpConnection.h"
#include "diagnostics/RepeatedNote.h"
#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

inline constexpr std::size_t kMostHttpConnections = 64;
inline constexpr std::size_t kMostEventReaders = 32;

class HttpServer : public HttpConnection::Owner {
 public:
  using Handler = std::function<void(const HttpRequest&, const HttpReply&)>;
  using Note = std::function<void(const std::string& line)>;

  // `note` takes journal lines, one a minute at most.
  HttpServer(EventLoop& loop, WayIn way, Handler handler, Note note);
  ~HttpServer() override;
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  void Take(std::unique_ptr<TcpConnection> connection);
  void CloseAll();
  std::size_t ConnectionCount() const { return connections_.size(); }
  std::size_t ReaderCount() const;

 private:
  void Handle(const HttpRequest& request, const HttpReply& reply) override;
  bool MayStream() override;
  void Refused(const HttpConnection& connection, const std::string& why) override;
  void Gone(HttpConnection& connection) override;
  bool MakeRoom();
  void Tell(const std::string& peer, const std::string& why);

  EventLoop& loop_;
  const WayIn way_;
  Handler handler_;
  Note note_;
  RepeatedNote trouble_;
  std::vector<std::shared_ptr<HttpConnection>> connections_;  // oldest first
};

}  // namespace zeb
