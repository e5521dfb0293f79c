#include "sources/BounceRelay.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

constexpr std::int32_t kFirstControlPort = 6900;
constexpr std::int32_t kHighestControlPort = 65535 - kFirstControlPort;
constexpr std::int32_t kLongestRetry = 86400;    // seconds
constexpr std::string_view kRelayName = "ZEB.";  // what the name of a relay begins with

}  // namespace

BounceRelay::BounceRelay(clsZEBService& service, IntakeWindow& window, std::function<void()> askController)
    : service_(service),
      window_(window),
      askController_(std::move(askController)),
      ring_(service.environment().loop, MakeRingEvents()),
      client_(service.environment().loop, service.environment().network, MakeEvents()) {}

uNetControlClient::Events BounceRelay::MakeEvents() {
  uNetControlClient::Events events;
  events.Connecting = [this] { Show("Bounce Connecting.."); };
  events.Connected = [this] { Show("Bounce Connected.."); };
  events.ControlGranted = [this] {
    Show("Have Bounce Control..");
    Note("relays to " + Remote());
    CheckForRing();
    askController_();
  };
  events.ControlRefused = [this](const std::string& controller) {
    Show("Bounce has refused Control..");
    Note("relays nothing: '" + OneLine(controller) + "' has control of " + Remote());
    RetryLater();
  };
  events.ControlEnded = [this] {
    Show("Bounce Control Ended..");
    Note("no longer relays to " + Remote() + ": it ended the control");
    RetryLater();
  };
  events.Disconnected = [this] {
    const std::string why = client_.LastError();
    Show("Bounce Disconnected..");
    Note("does not relay to " + Remote() + ": " + (why.empty() ? "the link was closed" : why));
    RetryLater();
  };
  return events;
}

RingCheck::Events BounceRelay::MakeRingEvents() {
  RingCheck::Events events;
  events.Send = [this](std::string_view line) { client_.Send(line); };
  events.RingFound = [this] {
    NoteSeldom(ringFound_, "what it relays to " + Remote() + " comes back from its controller '" +
                               controllerName() + "': what that one sends is not relayed");
  };
  events.RingEnded = [this] {
    NoteSeldom(ringEnded_, "what it relays to " + Remote() + " no longer comes back: it relays all again");
  };
  return events;
}

bool BounceRelay::ControllerRelays() const {
  return controllerName && controllerName().starts_with(kRelayName);
}

void BounceRelay::CheckForRing() {
  ring_.Stop();
  if (HasControl() && ControllerRelays()) ring_.Begin();
}

void BounceRelay::ControllerTookControl() {
  CheckForRing();
}

std::string BounceRelay::Remote() const {
  return OneLine(host_) + ", control port " + std::to_string(port_);
}

void BounceRelay::ApplySettings() {
  const ServiceSettings& settings = service_.settings;
  if (!settings.UseBounce) return Close();
  const std::string_view name = TrimBlanks(settings.ServiceName);
  const std::string controllerName = std::string(kRelayName) + std::string(name.substr(0, name.find(' ')));
  const bool same = inUse_ && host_ == settings.BounceServer && port_ == settings.BouncePort &&
                    controllerName_ == controllerName;
  inUse_ = true;
  if (same && HasControl()) return;
  host_ = settings.BounceServer;
  port_ = settings.BouncePort;
  controllerName_ = controllerName;
  ConnecttoZEBBounce();
}

void BounceRelay::ConnecttoZEBBounce() {
  retry_.Stop();
  ring_.Stop();
  if (host_.empty() || port_ < 1 || port_ > kHighestControlPort) {
    client_.Disconnect();
    Show("Bounce Disconnected..");
    return Note("relays nothing: BounceServer is empty, or BouncePort is not 1 to " +
                std::to_string(kHighestControlPort));
  }
  client_.Connect(host_, static_cast<std::uint16_t>(kFirstControlPort + port_), controllerName_);
}

void BounceRelay::Close() {
  retry_.Stop();
  ring_.Stop();
  client_.Disconnect();
  lastNote_.clear();
  if (std::exchange(inUse_, false)) Show("");
}

bool BounceRelay::Relay(std::string_view message, bool fromController) {
  if (!HasControl()) return false;
  // Some receivers end a line at a carriage return: what is one line here must not be two there.
  std::string line(message);
  for (char& c : line)
    if (c == '\r' || c == '\n' || c == '\0') c = ' ';
  if (fromController && ControllerRelays()) {
    const std::optional<std::string> passedOn = ring_.LineToPassOn(line);
    return passedOn && Send(*passedOn);
  }
  return Send(line);
}

bool BounceRelay::Send(std::string_view line) {
  client_.Send(line);
  if (HasControl()) {
    ring_.Relayed(line);
    return true;
  }
  Show("Bounce Disconnected.. (the remote does not take the information)");
  return false;
}

void BounceRelay::RetryLater() {
  ring_.Stop();
  Environment& environment = service_.environment();
  std::int32_t seconds = 0;
  try {
    seconds = environment.hive.ReadNumber(environment.settingsRoot, "BounceRetrySeconds", 0);
  } catch (const SettingsError&) {
    ReportException("reading BounceRetrySeconds", Report::kQuietly);
  }
  if (seconds <= 0 || !inUse_) return;
  retry_ = environment.loop.After(std::chrono::seconds(std::min(seconds, kLongestRetry)),
                                  [this] { ConnecttoZEBBounce(); });
}

void BounceRelay::Show(const std::string& text) {
  window_.SetPanel(Panel::kBounceControl, text);
}

void BounceRelay::Note(const std::string& text) {
  if (std::exchange(lastNote_, text) == text) return;
  service_.environment().person.Note(service_.settings.ServiceName + ": " + text);
}

void BounceRelay::NoteSeldom(RepeatedNote& kind, const std::string& text) {
  Environment& environment = service_.environment();
  if (const auto more = kind.Next(environment.loop.Monotonic()))
    environment.person.Note(service_.settings.ServiceName + ": " + text + *more);
}

}  // namespace zeb
