// SilentWindow: an intake without a window: nothing is shown or updated, the items themselves are all that is
// wanted. For previews and for measuring.
#pragma once

#include "sources/ItemIntake.h"

namespace zeb {

class SilentWindow : public IntakeWindow {
 public:
  void SetPanel(Panel, const std::string&) override {}
  void RefreshItemList() override {}
  void UpdateOutputsNow() override {}
  bool UpdateRunning() const override { return false; }
  void InformationReceived() override {}
  void SendTravelFlag(bool) override {}
};

}  // namespace zeb
