// A service with an intake and a window that only records, as the sources' tests need them.
#pragma once

#include <string>
#include <vector>

#include "diagnostics/hxGeneral.h"
#include "platform/simulated/TestEnvironment.h"
#include "sources/ControlLink.h"
#include "sources/ItemIntake.h"
#include "sources/ItemMessage.h"

namespace zeb {

class RecordingWindow : public IntakeWindow {
 public:
  void SetPanel(Panel panel, const std::string& text) override {
    if (panel == Panel::kInformation)
      information = text;
    else
      travel = text;
  }
  void RefreshItemList() override { ++refreshes; }
  void UpdateOutputsNow() override { ++updates; }
  bool UpdateRunning() const override { return running; }
  void InformationReceived() override { ++informed; }
  void SendTravelFlag(bool active) override { flags.push_back(active); }

  std::string information, travel;
  int refreshes = 0, updates = 0, informed = 0;
  bool running = false;
  std::vector<bool> flags;
};

struct IntakeFixture : testing::Test, ServiceEvents {
  IntakeFixture() { service.SetItemCount(kMaxNextItems); }

  clsZEBItemInfo Parsed(std::string_view message) {
    clsZEBItemInfo item;
    EXPECT_TRUE(ParseItemMessage(message, intake, ports.carts, item)) << message;
    return item;
  }
  void Say(std::string_view line) { link.MessageFromController(1, line); }
  std::string Current() const { return service.CurrentItem()->ItemName; }
  std::string Next(int slot) const { return (*service.NextItem(slot))->ItemName; }

  // The debug log from here on.
  void StartLog() {
    log.emplace(ports.loop, ports.files, ports.person, "zebd", "/log", 5);
    log->Install();
  }
  bool Logged(std::string_view line) {
    return ports.files.Contents("/log/zebd.20260302.log").find(line) != std::string::npos;
  }

  TestEnvironment ports;
  clsZEBService service{ports.environment, nullptr, *this};
  RecordingWindow window;
  ItemIntake intake{service, window};
  ControlLink link{intake, ports.carts};
  std::optional<DebugLog> log;
};

}  // namespace zeb
