#include "app/ServiceHistory.h"

#include <utility>

#include "platform/EventLoop.h"
#include "platform/HistoryStore.h"

namespace zeb {

ServiceHistory::ServiceHistory(const clsZEBService& service, std::shared_ptr<HistoryRecorder> recorder,
                               std::function<std::string()> source)
    : service_(service), recorder_(std::move(recorder)), source_(std::move(source)) {}

// ---- Items

void ServiceHistory::LookAtItems() {
  if (!Keeps() || std::exchange(seen_, service_.ItemsVersion()) == service_.ItemsVersion()) return;
  LookAt(kHistoryCurrent, service_.CurrentItem(), current_);
  LookAt(kHistoryComingSoon, service_.ComingSoonItem(), comingSoon_);
  next_.resize(static_cast<std::size_t>(service_.ItemCount()));
  for (int i = 1; i <= service_.ItemCount(); ++i)
    LookAt(i, *service_.NextItem(i), next_[static_cast<std::size_t>(i) - 1]);
}

// An item that was set is a record of its own; one that was not is the same record as before.
void ServiceHistory::LookAt(int slot, const clsZEBItemInfo& item, clsZEBItemInfo& known) {
  if (&item.Fields() == &known.Fields()) return;
  const bool nothingNew = item.HoldsNothing() && known.HoldsNothing();
  known = item;
  if (!nothingNew)
    recorder_->ItemSet(service_.ServiceNumber(), service_.settings.ServiceName, slot, source_(), item);
}

// ---- Outputs

void ServiceHistory::Updating(UpdateCause cause) {
  if (Keeps()) recorder_->Updating(service_.LastSnapshot(), cause);
}

void ServiceHistory::RunEnded(const UpdateRecord& record, const UpdateRun& run) {
  if (!Keeps()) {
    pausedBefore_ = true;
    return told_.clear();
  }
  if (std::exchange(pausedBefore_, false)) SkipWhatIsShown(*record.snapshot);
  HistoryShown shown;
  shown.snapshot = record.snapshot;
  shown.cause = record.cause;
  shown.type = run.type;
  shown.number = run.index;
  if (record.cause != UpdateCause::kInterval)
    shown.latency = service_.environment().loop.Monotonic() - record.snapshot->arrived;
  if (run.tally.published > 0) TellPublished(shown, run.output);
  shown.latency.reset();
  for (const clsZEBTemplate::Problem& problem : run.output->Problems()) {
    shown.part = problem.thing;
    shown.problem = problem.reason;
    recorder_->Shown(shown);
  }
}

// What was put out while nothing was kept: when, nobody knows any more.
void ServiceHistory::SkipWhatIsShown(const ServiceSnapshot& present) {
  for (const OutputTypeInfo& info : kOutputTypes)
    for (int i = 1; const OutputPtr output = service_.Output(info.type, i); ++i)
      for (const Shown::Page& page : output->LastShown().pages)
        if (page.snapshot.get() != &present) told_[output][page.name] = page.snapshot;
}

// Of pages, those that are new: a page may show something older than this update, and one that its rules left
// out is not published again.
void ServiceHistory::TellPublished(HistoryShown shown, const OutputPtr& output) {
  const Shown put = output->LastShown();
  if (put.pages.empty()) {
    shown.text = put.text;
    shown.source = put.source;
    recorder_->Shown(shown);
  }
  std::erase_if(told_, [](const auto& entry) { return entry.first.expired(); });
  for (const Shown::Page& page : put.pages) {
    SnapshotPtr& told = told_[output][page.name];
    if (told == page.snapshot) continue;
    told = page.snapshot;
    if (shown.latency) shown.latency = service_.environment().loop.Monotonic() - page.snapshot->arrived;
    shown.snapshot = page.snapshot;
    shown.part = page.name;
    shown.page = page;
    shown.source = page.source;
    recorder_->Shown(shown);
  }
}

}  // namespace zeb
