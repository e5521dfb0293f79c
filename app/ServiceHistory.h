// ServiceHistory: what the window of a service tells the history: which items came, and what each output put
// out or could not.
//
// Owned by the service window, which calls it when things happen; keeps nothing when there is no recorder.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/UpdateRecord.h"
#include "core/clsZEBService.h"
#include "history/HistoryRecorder.h"

namespace zeb {

class ServiceHistory {
 public:
  // `source` says who gives the items at this moment, in a few words.
  ServiceHistory(const clsZEBService& service, std::shared_ptr<HistoryRecorder> recorder,
                 std::function<std::string()> source);

  // The items may be others now. Previous items are those that were current; they are not told.
  void LookAtItems();
  // An update has taken the service's last snapshot.
  void Updating(UpdateCause cause);
  void RunEnded(const UpdateRecord& record, const UpdateRun& run);

 private:
  bool Keeps() const { return recorder_ && recorder_->Keeps(); }
  void LookAt(int slot, const clsZEBItemInfo& item, clsZEBItemInfo& known);
  void SkipWhatIsShown(const ServiceSnapshot& present);
  void TellPublished(HistoryShown shown, const OutputPtr& output);

  const clsZEBService& service_;
  const std::shared_ptr<HistoryRecorder> recorder_;  // null: nothing is kept
  const std::function<std::string()> source_;
  clsZEBItemInfo current_, comingSoon_;  // as they were last seen
  std::vector<clsZEBItemInfo> next_;
  std::uint64_t seen_ = 0;  // the service's ItemsVersion then
  // What each page showed when it was last told, by output and destination.
  std::map<std::weak_ptr<clsZEBTemplate>, std::map<std::string, SnapshotPtr>, std::owner_less<>> told_;
  bool pausedBefore_ = false;  // nothing was kept when the last run ended
};

}  // namespace zeb
