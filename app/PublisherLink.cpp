#include "app/PublisherLink.h"

#include <utility>

#include "dashboard/Dashboard.h"
#include "dashboard/HttpWire.h"
#include "dashboard/Json.h"
#include "text/Paths.h"

namespace zeb {

namespace {

// What a refusal says of itself.
std::string ReasonOf(int status, const std::string& body) {
  const auto object = ReadJsonObject(body);
  if (object) {
    const auto reason = JsonText(object.Value(), "error");
    if (reason && !reason.Value().empty()) return reason.Value();
  }
  return "the publisher answered with status " + std::to_string(status);
}

// Who hangs may have the request already.
std::string NoAnswer(const std::string& method) {
  const std::string changes = method == "GET" ? "" : "; it may still do what was asked";
  return "the publisher does not answer: it hangs or is busy" + changes;
}

constexpr int kConflict = 409;
constexpr int kTries = 10;
constexpr Duration kBetweenTries = std::chrono::milliseconds(500);

}  // namespace

PublisherLink::PublisherLink(EventLoop& loop, LocalSockets& sockets, std::string folder)
    : loop_(loop), sockets_(sockets), folder_(std::move(folder)) {}

PublisherLink::Reply PublisherLink::Ask(const std::string& method, const std::string& target,
                                        const std::string& body, Duration limit) {
  Reply reply;
  LocalLink link = sockets_.ConnectLocal(JoinPath(folder_, kLocalSocketName));
  if (!link.connection) {
    reply.unreachable = true;
    reply.notRunning = link.nobodyListens;
    reply.problem = link.nobodyListens ? "no zebd runs on the data folder '" + folder_ + "'" : link.problem;
    return reply;
  }
  HttpAnswerReader reader;
  bool ended = false;
  Outcome read;
  link.connection->onData = [&](std::string_view bytes) {
    if (read) read = reader.Take(bytes);
  };
  link.connection->onClosed = [&] { ended = true; };
  link.connection->Send(WriteHttpRequest(method, target, body));
  const bool inTime = loop_.WaitUntil([&] { return ended || !read || reader.Done(); }, limit);
  if (read && !reader.Done()) read = inTime ? reader.TakeEnd() : Outcome(Failure{NoAnswer(method)});
  if (!read) {
    reply.problem = read.Reason();
    return reply;
  }
  reply.status = reader.Status();
  reply.body = reader.TakeBody();
  if (!reply.Done()) reply.problem = ReasonOf(reply.status, reply.body);
  return reply;
}

PublisherLink::Reply PublisherLink::RemoveService(int number) {
  const std::string target = "/api/v1/services/" + std::to_string(number);
  Reply reply = Ask("DELETE", target, "", kWork);
  for (int again = 0; again < kTries && reply.status == kConflict; ++again) {
    loop_.Wait(kBetweenTries);
    reply = Ask("DELETE", target, "", kWork);
  }
  return reply;
}

}  // namespace zeb
