#include "outputs/http/RequestSeries.h"

#include <algorithm>
#include <utility>

namespace zeb {

bool RequestSeries::Run(EventLoop& loop, const SnapshotPtr& snapshot, std::size_t count,
                        const Epoch::Mark& mine, const Send& send) {
  const bool repetition = snapshot == last_ && verdicts_.size() == count && MayPass();
  // Until its turn comes, a request counts as one that is still to be sent.
  if (!repetition) verdicts_.assign(count, {"not sent yet", true});
  last_ = snapshot;
  taken_ = 0;
  bool first = true;
  for (std::size_t i = 0; i < count; ++i) {
    if (!IsDue(verdicts_[i])) continue;
    if (!std::exchange(first, false)) loop.WaitUntil([&] { return !mine.Holds(); }, kRequestPause);
    if (!mine.Holds()) return false;
    Verdict verdict = send(i);
    if (!mine.Holds()) return false;
    if (verdict.problem.empty()) ++taken_;
    verdicts_[i] = std::move(verdict);
  }
  return true;
}

std::string RequestSeries::Problem() const {
  for (const Verdict& verdict : verdicts_)
    if (!verdict.problem.empty()) return verdict.problem;
  return {};
}

bool RequestSeries::MayPass() const {
  return std::any_of(verdicts_.begin(), verdicts_.end(), IsDue);
}

std::string RequestSeries::TakenText(const std::vector<std::string>& texts) const {
  std::string taken;
  for (std::size_t i = 0; i < texts.size() && i < verdicts_.size(); ++i)
    if (verdicts_[i].problem.empty()) taken.append(taken.empty() ? "" : "\n").append(texts[i]);
  return taken;
}

int RequestSeries::Failed() const {
  return static_cast<int>(std::count_if(verdicts_.begin(), verdicts_.end(),
                                        [](const Verdict& verdict) { return !verdict.problem.empty(); }));
}

}  // namespace zeb
