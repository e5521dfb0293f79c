// HistoryRoute: GET /api/v1/history, what was on air and what was shown (history/HistoryRequest.h).
#pragma once

#include "dashboard/OneWorker.h"
#include "dashboard/Router.h"
#include "history/HistoryRequest.h"
#include "platform/EventLoop.h"

namespace zeb {

class HistoryRoute {
 public:
  // The loop outlives this object, which outlives the router. `open` is called on a worker.
  HistoryRoute(EventLoop& loop, OpenHistory open, UtcOffsetOf utcOffset);

  void AddTo(Router& router);

 private:
  HttpAnswer Answer(const HttpRequest& request);

  EventLoop& loop_;
  const OpenHistory open_;
  const UtcOffsetOf utcOffset_;
  OneWorker worker_;
};

}  // namespace zeb
