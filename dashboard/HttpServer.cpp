#include "dashboard/HttpServer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"

namespace zeb {

namespace {

// A request of a browser or a command comes in one piece; who takes longer than this can wait.
constexpr Duration kUnhurried = std::chrono::seconds(1);

}  // namespace

HttpServer::HttpServer(EventLoop& loop, WayIn way, Handler handler, Note note)
    : loop_(loop), way_(way), handler_(std::move(handler)), note_(std::move(note)) {}

HttpServer::~HttpServer() {
  CloseAll();
}

void HttpServer::CloseAll() {
  while (!connections_.empty()) std::shared_ptr(connections_.back())->Drop();
}

std::size_t HttpServer::ReaderCount() const {
  return static_cast<std::size_t>(
      std::count_if(connections_.begin(), connections_.end(), [](const auto& connection) {
        return connection->CurrentPhase() == HttpConnection::Phase::kStreaming;
      }));
}

void HttpServer::Take(std::unique_ptr<TcpConnection> connection) {
  if (connections_.size() >= kMostHttpConnections && !MakeRoom()) {
    Tell(connection->PeerAddress(), "all " + std::to_string(kMostHttpConnections) + " places are taken");
    HttpAnswer answer = ErrorAnswer(503, "all places are taken");
    answer.headers.emplace_back("Retry-After", "10");
    connection->Send(WriteHttpAnswer(answer, false, AnswerBody::kSent));
    return connection->Close();
  }
  connections_.push_back(std::make_shared<HttpConnection>(loop_, *this, way_, std::move(connection)));
  connections_.back()->Begin();
}

bool HttpServer::MakeRoom() {
  using Phase = HttpConnection::Phase;
  std::shared_ptr<HttpConnection> leaves;
  for (const auto& connection : connections_) {
    const Phase phase = connection->CurrentPhase();
    const bool unhurried = loop_.Monotonic() - connection->Since() >= kUnhurried;
    if (phase != Phase::kIdle && !(unhurried && (phase == Phase::kReading || phase == Phase::kClosing)))
      continue;
    if (!leaves || connection->Since() < leaves->Since()) leaves = connection;
  }
  if (leaves) leaves->Drop();
  return leaves != nullptr;
}

bool HttpServer::MayStream() {
  return ReaderCount() < kMostEventReaders;
}

void HttpServer::Handle(const HttpRequest& request, const HttpReply& reply) {
  try {
    handler_(request, reply);
  } catch (const std::exception& error) {
    ReportException("answering a request", Report::kQuietly);
    Tell(request.peerAddress, error.what());
    reply.Send(ErrorAnswer(500, "there was a fault; the journal tells more"));
  }
}

void HttpServer::Refused(const HttpConnection& connection, const std::string& why) {
  Tell(connection.PeerAddress(), why);
}

void HttpServer::Tell(const std::string& peer, const std::string& why) {
  if (const auto more = trouble_.Next(loop_.Monotonic()))
    note_("Dashboard: refused a request from " + peer + ": " + why + *more);
}

void HttpServer::Gone(HttpConnection& connection) {
  std::erase_if(connections_, [&](const auto& kept) { return kept.get() == &connection; });
}

}  // namespace zeb
