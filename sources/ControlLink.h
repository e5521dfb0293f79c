// ControlLink: what the playout system's commands do to a service.
//
// Owned by the service window, which owns the uNetControlServer that feeds it. Relaying to another instance
// happens first and independently, through the relay function when one is set.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/CartStore.h"
#include "sources/ItemIntake.h"

namespace zeb {

class ControlLink {
 public:
  ControlLink(ItemIntake& intake, CartStore& carts);

  // One line as it came from the controller. Unknown commands are ignored.
  void MessageFromController(int connectionIndex, std::string_view line);

  // Called with every message before it is handled here; false or unset: not relayed. Connection index 0: the
  // message did not come from the controller.
  std::function<bool(int connectionIndex, std::string_view line)> relay;
  // Called for CURRENTITEM_NEAREND; the window runs the service's cue in a task.
  std::function<void()> currentItemNearEnd;

  static std::string HelpText();

 private:
  using SetItem = void (ItemIntake::*)(const clsZEBItemInfo* item, bool updateNow);
  static SetItem SetterFor(std::string_view slot);  // null: no slot of that name

  void Relay(int connectionIndex, std::string_view line);
  void Dispatch(const std::string& command, std::string_view arguments);
  bool HandleItem(std::string_view command, std::string_view arguments);
  void HandleClear(std::string_view command);
  void HandlePresenter(std::string_view arguments);
  void HandleShow(std::string_view arguments);
  void HandleBulkLoad(std::string_view arguments);

  ItemIntake& intake_;
  CartStore& carts_;
};

}  // namespace zeb
