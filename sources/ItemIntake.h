// ItemIntake: the four operations in which every information source ends. They decide whether an item is new,
// store it, follow the travel flag, and decide whether the outputs are updated at once or a little later.
//
// Owned by the service window, with which it shares the service; tells the window what to show and when to
// update through IntakeWindow.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/clsZEBService.h"
#include "diagnostics/RepeatedNote.h"

namespace zeb {

enum class Panel { kInformation, kTravel, kNetControl, kBounceControl };

// What intake and the sources need of the service window.
class IntakeWindow {
 public:
  virtual ~IntakeWindow() = default;
  virtual void SetPanel(Panel panel, const std::string& text) = 0;
  virtual void RefreshItemList() = 0;
  // Starts the window's UpdateOutputs now; does nothing while one runs.
  virtual void UpdateOutputsNow() = 0;
  virtual bool UpdateRunning() const = 0;
  // Information arrived: an update falls due 1.5 s from now.
  virtual void InformationReceived() = 0;
  // Sends the service's travel flag in a task of its own.
  virtual void SendTravelFlag(bool active) = 0;
};

class ItemIntake {
 public:
  ItemIntake(clsZEBService& service, IntakeWindow& window);

  // Texts are cut to their bounds (core/ItemBounds.h). A null item: nothing was passed. For next and previous
  // items the slot is the item's own number; below 1 means 1.
  void SetCurrentItem(const clsZEBItemInfo* item, bool updateNow);
  void SetNextItem(const clsZEBItemInfo* item, bool updateNow);
  void SetPreviousItem(const clsZEBItemInfo* item, bool updateNow);
  void SetComingSoonItem(const clsZEBItemInfo* item, bool updateNow);

  // What arrived was longer than its bound: one line in the journal, about once a minute.
  void NoteExcess(const std::string& what);
  // The text, cut to the bound of a field and noted when it is longer.
  std::string Bounded(std::string_view field, std::string text);

  // Information other than an item arrived (presenter, show, a forced update): an update falls due.
  void NoteInformation(const std::string& panelText);
  // Clears the travel flag when its time is over. Called each second.
  void CheckTravelFlag();
  // Clears the travel flag now, if it is on: the service stops.
  void EndTravelFlag();
  bool TravelFlagActive() const { return travelFlagSince_.has_value(); }

  clsZEBService& service() { return service_; }
  IntakeWindow& window() { return window_; }

 private:
  // Every item passes through this, before it is compared: a cut one must not look new each time.
  clsZEBItemInfo Bounded(const clsZEBItemInfo& item);
  void FollowTravelFlag(const clsZEBItemInfo& item);
  void ClearTravelFlag();
  // Now when the service may, else a little later.
  void RequestUpdate();

  clsZEBService& service_;
  IntakeWindow& window_;
  std::optional<MonotonicTime> travelFlagSince_;
  RepeatedNote tooLong_;
};

}  // namespace zeb
