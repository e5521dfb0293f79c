// BounceRelay: passes every message of a service's controller straight on to another instance, as that
// instance's controller.
//
// Owned by the service window, with the service and the window outliving it. What the remote sends is not
// acted upon. A link that is lost stays so until settings are applied, unless the root value
// "BounceRetrySeconds" is above 0. The remote never holds the service up: one that leaves more than
// uNetControlClient::kMaxUnsentBytes unread is disconnected.
//
// Services that relay to each other in a ring are found out (RingCheck): then what the controller sends,
// which is the ring's other end, is not relayed any more, and what begins here still is.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "core/clsZEBService.h"
#include "diagnostics/RepeatedNote.h"
#include "sources/ItemIntake.h"
#include "sources/RingCheck.h"
#include "sources/uNetControlClient.h"

namespace zeb {

class BounceRelay {
 public:
  // `askController` sends GET_INFORMATION to the local controller, so that the remote gets the whole picture
  // at once.
  BounceRelay(clsZEBService& service, IntakeWindow& window, std::function<void()> askController);

  // After the settings were loaded or changed: opens, keeps or closes the link.
  void ApplySettings();
  void Close();
  bool PanelVisible() const { return inUse_; }  // while UseBounce is on

  // The name of the service's present controller; "" or unset: none.
  std::function<std::string()> controllerName;
  void ControllerTookControl();

  // False: the line was not relayed: the link has no control, or has just been given up, or the line has gone
  // round.
  bool Relay(std::string_view message, bool fromController);

 private:
  uNetControlClient::Events MakeEvents();
  RingCheck::Events MakeRingEvents();
  bool HasControl() const { return client_.CurrentState() == uNetControlClient::State::kHasControl; }
  bool ControllerRelays() const;
  void CheckForRing();
  void ConnecttoZEBBounce();
  void Show(const std::string& text);
  // A journal line, unless it is the same again: a remote that is away for days is reported once.
  void Note(const std::string& text);
  void NoteSeldom(RepeatedNote& kind, const std::string& text);
  bool Send(std::string_view line);
  std::string Remote() const;
  void RetryLater();

  clsZEBService& service_;
  IntakeWindow& window_;
  std::function<void()> askController_;
  bool inUse_ = false;
  std::string host_, controllerName_;
  std::int32_t port_ = 0;
  std::string lastNote_;
  RepeatedNote ringFound_, ringEnded_;
  Timer retry_;
  RingCheck ring_;
  uNetControlClient client_;
};

}  // namespace zeb
