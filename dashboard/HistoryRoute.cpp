#include "dashboard/HistoryRoute.h"

#include <chrono>
#include <utility>

namespace zeb {

namespace {

constexpr Duration kWorkLimit = std::chrono::seconds(10);

// On a worker.
HttpAnswer Ask(const OpenHistory& open, const HistoryRequest& request) {
  const auto reader = open();
  if (!reader) return ErrorAnswer(503, reader.Reason());
  Result<std::string> rows = HistoryJson(*reader.Value(), request);
  if (!rows) return ErrorAnswer(503, rows.Reason());
  HttpAnswer answer;
  answer.body = std::move(rows.Value());
  if (answer.body.size() > kMostAnswerBytes)
    return ErrorAnswer(413, "the answer is too long: ask for less with \"from\", \"to\" and \"limit\"");
  return answer;
}

}  // namespace

HistoryRoute::HistoryRoute(EventLoop& loop, OpenHistory open, UtcOffsetOf utcOffset)
    : loop_(loop), open_(std::move(open)), utcOffset_(std::move(utcOffset)), worker_(loop, kWorkLimit) {}

void HistoryRoute::AddTo(Router& router) {
  router.AddTask("GET", "/api/v1/history", Need::kRead,
                 [this](const HttpRequest& request) { return Answer(request); });
}

HttpAnswer HistoryRoute::Answer(const HttpRequest& request) {
  const HistoryMoment now(loop_.Now(), loop_.UtcOffset());
  const Result<HistoryRequest> asked = ReadHistoryRequest(request.query, now, utcOffset_);
  if (!asked) return ErrorAnswer(400, asked.Reason());
  const auto answer = worker_.Run([open = open_, question = asked.Value()] { return Ask(open, question); });
  return answer ? *answer : ErrorAnswer(503, "the history's disk does not answer");
}

}  // namespace zeb
