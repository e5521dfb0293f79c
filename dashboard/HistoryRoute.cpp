#include "dashboard/HistoryRoute.h"

#include <chrono>
#include <memory>

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

void HistoryRoute::AddTo(Router& router) {
  router.AddTask("GET", "/api/v1/history", Need::kRead,
                 [this](const HttpRequest& request) { return Answer(request); });
}

HttpAnswer HistoryRoute::Answer(const HttpRequest& request) {
  const HistoryMoment now(loop_.Now(), loop_.UtcOffset());
  const Result<HistoryRequest> asked = ReadHistoryRequest(request.query, now, utcOffset_);
  if (!asked) return ErrorAnswer(400, asked.Reason());
  // One at a time, so that whoever asks often takes no workers from the outputs.
  if (!loop_.WaitUntil([this] { return !working_; }, kWorkLimit))
    return ErrorAnswer(503, "an earlier question to the history is still being answered");
  working_ = true;
  const std::shared_ptr<void> done(nullptr, [this](void*) { working_ = false; });
  const auto answer =
      lane_.Run([open = open_, question = asked.Value()] { return Ask(open, question); }, kWorkLimit);
  return answer ? *answer : ErrorAnswer(503, "the history's disk does not answer");
}

}  // namespace zeb
