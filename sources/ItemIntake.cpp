#include "sources/ItemIntake.h"

#include <algorithm>
#include <chrono>

#include "core/ItemBounds.h"
#include "diagnostics/hxGeneral.h"
#include "text/LetterCase.h"

namespace zeb {

namespace {

bool SameAsExisting(const clsZEBItemInfo& arriving, const clsZEBItemInfo* existing, bool compareStartTime) {
  if (!existing || !arriving.IsSame(*existing, compareStartTime)) return false;
  DebugLine("Same as existing so aborting - '", arriving->ItemName, "' by '", arriving->Artists, "'");
  return true;
}

void LogItem(const clsZEBItemInfo& item) {
  DebugLine("Item - '", item->ItemName, "' by '", item->Artists, "'");
}

bool IndexTooHigh(const clsZEBItemInfo& item) {
  if (item.ItemIndexNumber <= kMaxNextItems) return false;
  DebugLine("Index Number Too High - ", std::int32_t{item.ItemIndexNumber});
  return true;
}

// An item that names no slot goes into the first. Its number says so, or a repeat of it would look new.
clsZEBItemInfo WithSlot(const clsZEBItemInfo& item) {
  clsZEBItemInfo numbered = item;
  numbered.ItemIndexNumber = std::max<std::int16_t>(numbered.ItemIndexNumber, 1);
  return numbered;
}

}  // namespace

ItemIntake::ItemIntake(clsZEBService& service, IntakeWindow& window) : service_(service), window_(window) {}

void ItemIntake::SetCurrentItem(const clsZEBItemInfo* item, bool updateNow) {
  try {
    DebugLine("Set Current Item");
    if (!item) {
      DebugLine("Nothing Passed!");
      return;
    }
    const clsZEBItemInfo arriving = Bounded(*item);
    if (SameAsExisting(arriving, &service_.CurrentItem(), service_.settings.UpdateOnTimingChange)) return;
    FollowTravelFlag(arriving);
    LogItem(arriving);
    service_.SetCurrentItem(arriving);
    if (updateNow) RequestUpdate();
  } catch (const std::exception&) {
    ReportException("setting the current item", Report::kQuietly);
  }
}

void ItemIntake::SetNextItem(const clsZEBItemInfo* item, bool updateNow) {
  try {
    const Trace trace("Service.SetNextItem");
    if (!item) {
      trace.ExitAs("Nothing Passed!");
      return;
    }
    if (IndexTooHigh(*item)) return;
    const clsZEBItemInfo arriving = WithSlot(Bounded(*item));
    const int slot = arriving.ItemIndexNumber;
    if (SameAsExisting(arriving, service_.NextItem(slot), service_.settings.UpdateOnTimingChange)) return;
    LogItem(arriving);
    service_.SetNextItem(slot, arriving);
    if (updateNow) RequestUpdate();
  } catch (const std::exception&) {
    ReportException("setting a next item", Report::kQuietly);
  }
}

void ItemIntake::SetPreviousItem(const clsZEBItemInfo* item, bool updateNow) {
  try {
    DebugLine("Set Previous Item");
    if (!item) {
      DebugLine("Nothing Passed!");
      return;
    }
    if (IndexTooHigh(*item)) return;
    const clsZEBItemInfo arriving = WithSlot(Bounded(*item));
    const int slot = arriving.ItemIndexNumber;
    if (SameAsExisting(arriving, service_.PreviousItem(slot), service_.settings.UpdateOnTimingChange)) return;
    LogItem(arriving);
    service_.SetPreviousItem(slot, arriving);
    if (updateNow) RequestUpdate();
  } catch (const std::exception&) {
    ReportException("setting a previous item", Report::kQuietly);
  }
}

void ItemIntake::SetComingSoonItem(const clsZEBItemInfo* item, bool updateNow) {
  try {
    DebugLine("Set Coming Soon Item");
    if (!item) {
      DebugLine("Nothing Passed!");
      return;
    }
    const clsZEBItemInfo arriving = Bounded(*item);
    if (SameAsExisting(arriving, &service_.ComingSoonItem(), service_.settings.UpdateOnTimingChange)) return;
    LogItem(arriving);
    service_.SetComingSoonItem(arriving);
    if (updateNow) RequestUpdate();
  } catch (const std::exception&) {
    ReportException("setting the coming soon item", Report::kQuietly);
  }
}

clsZEBItemInfo ItemIntake::Bounded(const clsZEBItemInfo& item) {
  clsZEBItemInfo bounded = item;
  if (const std::string excess = ExcessText(CutToBounds(bounded)); !excess.empty()) NoteExcess(excess);
  return bounded;
}

std::string ItemIntake::Bounded(std::string_view field, std::string text) {
  if (const std::size_t bytes = CutToBound(text); bytes > 0) NoteExcess(ExcessText({{field, bytes}}));
  return text;
}

void ItemIntake::NoteExcess(const std::string& what) {
  Environment& environment = service_.environment();
  if (const auto more = tooLong_.Next(environment.loop.Monotonic()))
    environment.person.Note(service_.settings.ServiceName + ": " + what + *more);
}

void ItemIntake::FollowTravelFlag(const clsZEBItemInfo& item) {
  const std::string& activate = service_.settings.TravelFlagActivateString;
  if (!activate.empty() && StartsWithIgnoringCase(item->ItemName, activate)) {
    travelFlagSince_ = service_.environment().loop.Monotonic();
    window_.SetPanel(Panel::kTravel, "TA");
    window_.SendTravelFlag(true);
  } else if (travelFlagSince_) {
    ClearTravelFlag();
  }
}

void ItemIntake::ClearTravelFlag() {
  travelFlagSince_.reset();
  window_.SetPanel(Panel::kTravel, "");
  window_.SendTravelFlag(false);
}

void ItemIntake::EndTravelFlag() {
  if (travelFlagSince_) ClearTravelFlag();
}

void ItemIntake::CheckTravelFlag() {
  if (!travelFlagSince_) return;
  const auto active = service_.environment().loop.Monotonic() - *travelFlagSince_;
  if (active >= std::chrono::seconds(service_.settings.TravelFlagDeactivateTimeout)) ClearTravelFlag();
}

void ItemIntake::RequestUpdate() {
  window_.RefreshItemList();
  window_.InformationReceived();
  if (service_.settings.InstantUpdate && !window_.UpdateRunning()) {
    window_.SetPanel(Panel::kInformation, "Information Update received, Updating..");
    window_.UpdateOutputsNow();
  } else {
    window_.SetPanel(Panel::kInformation, "Information Update received, waiting..");
  }
}

void ItemIntake::NoteInformation(const std::string& panelText) {
  window_.InformationReceived();
  window_.SetPanel(Panel::kInformation, panelText);
}

}  // namespace zeb
