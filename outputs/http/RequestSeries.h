// RequestSeries: the requests or commands of one update, half a second apart.
//
// Owned by an output. It remembers what became of each, so that the same snapshot, sent once more, brings out
// only those that failed and may pass.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "core/ServiceSnapshot.h"
#include "outputs/http/RequestExchange.h"
#include "platform/Epoch.h"

namespace zeb {

class RequestSeries {
 public:
  using Send = std::function<Verdict(std::size_t index)>;

  // Sends what is due of `count` requests; waits. False when `mine` ended meanwhile, and then nothing more is
  // sent.
  bool Run(EventLoop& loop, const SnapshotPtr& snapshot, std::size_t count, const Epoch::Mark& mine,
           const Send& send);

  std::string Problem() const;  // the first one; "" when all were taken
  bool MayPass() const;
  int Failed() const;
  int Taken() const { return taken_; }  // in the last run
  // Those of `texts`, one for each request, that were taken, now or in an earlier run with the same snapshot.
  std::string TakenText(const std::vector<std::string>& texts) const;

 private:
  static bool IsDue(const Verdict& verdict) { return !verdict.problem.empty() && verdict.mayPass; }

  SnapshotPtr last_;
  std::vector<Verdict> verdicts_;  // of the last snapshot's requests
  int taken_ = 0;
};

}  // namespace zeb
