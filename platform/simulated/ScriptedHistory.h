// ScriptedHistory: a history store in memory that fails as a test says.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/HistoryStore.h"

namespace zeb {

class ScriptedHistory : public HistoryStore {
 public:
  HistoryOutcome Write(const HistoryBatch& batch, const HistoryLimits& limits) override {
    if (whileWriting) whileWriting();
    ++writes;
    lastLimits = limits;
    if (HistoryOutcome next = Next(); !next.Ok()) return next;
    batches.push_back(batch);
    return {};
  }
  HistoryOutcome CleanUp(const HistoryLimits& limits, std::int64_t nowUtc) override {
    lastLimits = limits;
    cleanUps.push_back(nowUtc);
    HistoryOutcome next = Next();
    next.more = next.Ok() && piecesToCleanUp-- > 0;
    return next;
  }
  Result<std::string> SetAside() override {
    if (!setAsideFails.empty()) return Failure{setAsideFails};
    ++setAside;
    return std::string("history.aside");
  }
  void Close() override { ++closed; }

  // What the next operations give; then all is well, unless `always` says otherwise.
  std::deque<HistoryOutcome> script;
  HistoryOutcome always;
  std::function<void()> whileWriting;  // may wait
  std::string setAsideFails;
  int piecesToCleanUp = 0;

  std::vector<HistoryBatch> batches;
  std::vector<std::int64_t> cleanUps;
  HistoryLimits lastLimits;
  int writes = 0, setAside = 0, closed = 0;

 private:
  HistoryOutcome Next() {
    if (script.empty()) return always;
    HistoryOutcome next = script.front();
    script.pop_front();
    return next;
  }
};

}  // namespace zeb
