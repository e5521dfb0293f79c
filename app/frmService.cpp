#include "app/frmService.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <utility>
#include <vector>

#include "app/OutputJournal.h"
#include "core/Counted.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/dab/LabelClient.h"
#include "platform/SerialPortControl.h"
#include "sources/BounceRelay.h"
#include "sources/InfoFileSource.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kTickInterval = 1000ms;
constexpr Duration kUpdateDelay = 1500ms;  // after the last information
constexpr Duration kListenRetry = 30s;
// So long a restart or a close waits for what is under way; outputs end their waits long before.
constexpr Duration kLongestWait = std::chrono::hours(1);
constexpr std::int32_t kFirstControlPort = 6900;
constexpr std::int32_t kHighestPort = 65535;
constexpr std::int32_t kSourceControlLink = 0;

constexpr const char* kNoController = "No controller connected";
constexpr const char* kWaiting = "Information Update received, waiting..";
constexpr const char* kUpdating = "Information Update received, updating..";
constexpr const char* kForcing = "Forcing Information Update, waiting..";

// Sets a flag until the end of the scope, on whatever way that is reached.
class FlagHeld {
 public:
  explicit FlagHeld(bool& flag) : flag_(flag) { flag_ = true; }
  ~FlagHeld() { flag_ = false; }
  FlagHeld(const FlagHeld&) = delete;
  FlagHeld& operator=(const FlagHeld&) = delete;

 private:
  bool& flag_;
};

}  // namespace

struct frmService::State {
  State(Environment& givenEnvironment, OutputFactory makeOutput, ServiceEvents& events, IntakeWindow& window,
        uNetControlServer::Events serverEvents)
      : environment(givenEnvironment),
        service(givenEnvironment, std::move(makeOutput), events),
        intake(service, window),
        link(intake, givenEnvironment.carts),
        server(givenEnvironment, std::move(serverEvents)),
        infoFile(std::make_shared<InfoFileSource>(givenEnvironment, intake)),
        bounce(service, window, [this] { server.SendToController("GET_INFORMATION"); }),
        journal(service) {}

  Environment& environment;
  clsZEBService service;
  ItemIntake intake;
  ControlLink link;
  uNetControlServer server;
  std::shared_ptr<InfoFileSource> infoFile;
  BounceRelay bounce;
  OutputJournal journal;

  std::array<std::string, 4> panels;
  int itemListVersion = 0;
  Timer tmrUpdateOutputs;
  Timer delayedUpdate;  // the tick at exactly the moment at which a delayed update falls due
  Timer listenRetry;
  std::optional<MonotonicTime> lastInformation;
  bool pending = false;        // information that no update has taken up yet
  bool outputsInHand = false;  // they are being started, updated or restarted
  bool reloadWaiting = false;
  bool nearEndRunning = false;
  bool opened = false, closing = false, closed = false;
  int tasks = 0;  // those that use the outputs, but for the one that closes
  std::uint16_t controlPort = 0;
};

std::shared_ptr<frmService> frmService::Create(Environment& environment, OutputFactory makeOutput) {
  return std::shared_ptr<frmService>(new frmService(environment, std::move(makeOutput)));
}

frmService::frmService(Environment& environment, OutputFactory makeOutput)
    : state_(std::make_unique<State>(environment, std::move(makeOutput), static_cast<ServiceEvents&>(*this),
                                     static_cast<IntakeWindow&>(*this), ServerEvents())) {
  state_->link.currentItemNearEnd = [this] { SendNearEnd(); };
  state_->link.relay = [this](std::string_view line) { return state_->bounce.Relay(line); };
}

frmService::~frmService() = default;

// ---- Opening and closing

void frmService::Open(int number) {
  State& state = *state_;
  if (state.opened || state.closing) return;
  state.opened = true;
  SetPanel(Panel::kNetControl, kNoController);
  state.service.SetItemCount(kMaxNextItems);
  state.service.SetServiceNumber(number);
  OpenSource();
  state.tmrUpdateOutputs = state.environment.loop.Every(kTickInterval, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Tick();
  });
  StartTask("start of the outputs", [this] {
    {
      const FlagHeld inHand(state_->outputsInHand);
      StartOutputs();
    }
    ArmDelayedUpdate();
  });
}

void frmService::Close() {
  State& state = *state_;
  if (state.closing) return;
  state.closing = true;
  state.tmrUpdateOutputs.Stop();
  state.delayedUpdate.Stop();
  state.listenRetry.Stop();
  state.server.Close();
  state.infoFile->Close();
  state.bounce.Close();
  state.environment.loop.Start("close", [self = shared_from_this()] {
    State& closing = *self->state_;
    closing.environment.loop.WaitUntil([&closing] { return closing.tasks == 0; }, kLongestWait);
    closing.service.ClearService();
    closing.closed = true;
  });
}

void frmService::Reload() {
  State& state = *state_;
  if (!state.opened || state.closing || state.reloadWaiting) return;
  state.reloadWaiting = true;
  StartTask("reload", [this] {
    State& waiting = *state_;
    waiting.environment.loop.WaitUntil([&waiting] { return waiting.closing || waiting.tasks == 1; },
                                       kLongestWait);
    waiting.reloadWaiting = false;
    if (waiting.closing) return;
    RunReload();
  });
}

void frmService::RunReload() {
  State& state = *state_;
  {
    const FlagHeld inHand(state.outputsInHand);
    clsZEBService& service = state.service;
    // Where the updates have got to is not written to the store each time.
    const std::int32_t lastIndex = service.settings.LastUpdateOnServerIndex;
    service.ClearService();
    service.SetServiceNumber(service.ServiceNumber());
    service.settings.LastUpdateOnServerIndex = std::min(lastIndex, service.settings.NumberUpdatesOnServer);
    if (state.closing) return;
    OpenSource();
    StartOutputs();
  }
  if (state.lastInformation) InformationReceived();  // so that new outputs show what the others do
}

void frmService::StartTask(const std::string& name, std::function<void()> work) {
  state_->environment.loop.Start(name, [self = shared_from_this(), work = std::move(work)] {
    const Counted counted(self->state_->tasks);
    work();
  });
}

std::shared_ptr<Control> frmService::MakeControl(OutputType type) {
  if (type == OutputType::kHTTP || type == OutputType::kEncoder)
    return state_->environment.network.MakeClient();
  if (type == OutputType::kDAB) return std::make_shared<LabelClient>(state_->environment.network);
  if (type == OutputType::kSerial && state_->environment.serialPorts)
    return state_->environment.serialPorts->MakePort();
  return nullptr;
}

void frmService::StartOutputs() {
  State& state = *state_;
  for (const OutputTypeInfo& info : kOutputTypes) {
    const auto typeCode = static_cast<std::int32_t>(info.type);
    for (int i = 1; i <= state.service.OutputCount(typeCode) && !state.closing; ++i) {
      const OutputPtr output = state.service.Output(info.type, i);
      try {
        output->StartOutput(MakeControl(info.type));
        state.journal.Check(info.type, i);
      } catch (const std::exception&) {
        ReportException("starting an output", true);
      }
    }
  }
}

// ---- The information source

void frmService::OpenSource() {
  State& state = *state_;
  const ServiceSettings& settings = state.service.settings;
  const bool linked = settings.InfoSourceType == kSourceControlLink && settings.TolvanTCPControlPort >= 1 &&
                      settings.TolvanTCPControlPort <= kHighestPort - kFirstControlPort;
  state.controlPort = linked ? static_cast<std::uint16_t>(kFirstControlPort + settings.TolvanTCPControlPort)
                             : std::uint16_t{0};
  if (linked)
    Listen();
  else
    state.server.Close();
  if (InfoFileSource::Polls(settings.InfoSourceType))
    state.infoFile->Open(settings.InfoSourceType, settings.InfoSourceFileName);
  else
    state.infoFile->Close();
  state.bounce.ApplySettings();
}

// A port that is taken may come free (a program that is being replaced ends), so it is tried again.
void frmService::Listen() {
  State& state = *state_;
  state.listenRetry.Stop();
  if (state.closing || state.controlPort == 0 || state.server.Listen(state.controlPort)) return;
  state.listenRetry = state.environment.loop.After(kListenRetry, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Listen();
  });
}

uNetControlServer::Events frmService::ServerEvents() {
  uNetControlServer::Events events;
  events.ControllerTookControl = [this](const std::string& controller) {
    const auto self = shared_from_this();
    SetPanel(Panel::kNetControl, controller + " has Control");
    state_->server.SendToController("GET_INFORMATION");
  };
  events.ControlEnded = [this] { SetPanel(Panel::kNetControl, kNoController); };
  events.MessageFromController = [this](int connectionIndex, std::string_view line) {
    const auto self = shared_from_this();
    state_->link.MessageFromController(connectionIndex, line);
  };
  events.HelpText = [] { return ControlLink::HelpText(); };
  events.StatusText = [this] {
    return "-Service Name       : " + state_->service.settings.ServiceName + "\r\n";
  };
  events.ServiceName = [this] { return state_->service.settings.ServiceName; };
  return events;
}

void frmService::SetZEBInformation(std::string_view message) {
  if (!state_->opened || state_->closing) return;
  state_->link.MessageFromController(0, message);
}

// ---- Updates

void frmService::Tick() {
  State& state = *state_;
  if (state.closing) return;
  state.intake.CheckTravelFlag();
  if (state.outputsInHand) return;
  const MonotonicTime now = state.environment.loop.Monotonic();
  if (state.pending && now - *state.lastInformation >= kUpdateDelay)
    UpdateOutputs(true);
  else if (state.service.PeriodicUpdateDue())
    UpdateOutputs(false);
}

void frmService::InformationReceived() {
  state_->lastInformation = state_->environment.loop.Monotonic();
  state_->pending = true;
  ArmDelayedUpdate();
}

void frmService::ArmDelayedUpdate() {
  State& state = *state_;
  if (!state.pending || state.closing) return;
  const Duration elapsed = state.environment.loop.Monotonic() - *state.lastInformation;
  state.delayedUpdate = state.environment.loop.After(std::max(Duration::zero(), kUpdateDelay - elapsed),
                                                     [weak = weak_from_this()] {
                                                       if (const auto self = weak.lock()) self->Tick();
                                                     });
}

void frmService::UpdateOutputs(bool full) {
  State& state = *state_;
  if (state.outputsInHand || state.closing || !state.opened) return;
  state.outputsInHand = true;  // from here on, since the task may begin later
  if (full) {
    state.pending = false;
    state.delayedUpdate.Stop();
  }
  state.intake.CheckTravelFlag();
  SetPanel(Panel::kInformation, kUpdating);
  StartTask("update of service " + std::to_string(state.service.ServiceNumber()), [this, full] {
    {
      const FlagHeld inHand(state_->outputsInHand);
      RunUpdate(full);
    }
    SetPanel(Panel::kInformation, state_->pending ? kWaiting : "");
    RefreshItemList();
    ArmDelayedUpdate();
  });
}

void frmService::RunUpdate(bool full) {
  State& state = *state_;
  if (state.closing) return;
  const MonotonicTime started = state.environment.loop.Monotonic();
  state.service.UpdateOutputs(full);
  if (full) state.journal.NoteUpdate(state.environment.loop.Monotonic() - started);
}

void frmService::OutputUpdateFinished(int index, OutputType type) {
  state_->journal.Check(type, index);
}

void frmService::ForceUpdate() {
  state_->intake.NoteInformation(kForcing);
}

// ---- Cues

void frmService::SendTravelFlag(bool active) {
  StartTask("travel flag", [this, active] {
    if (active)
      state_->service.SetTravelFlagActivated();
    else
      state_->service.SetTravelFlagCleared();
  });
}

void frmService::SendNearEnd() {
  // The end of an item that is told of again while its cue is on the way is the same end.
  if (state_->nearEndRunning || state_->closing) return;
  state_->nearEndRunning = true;
  StartTask("near end", [this] {
    const FlagHeld running(state_->nearEndRunning);
    state_->service.CurrentItemNearEnd();
  });
}

// ---- What the window shows

clsZEBService& frmService::service() {
  return state_->service;
}

bool frmService::Closed() const {
  return state_->closed;
}

const std::string& frmService::PanelText(Panel panel) const {
  return state_->panels[static_cast<std::size_t>(panel)];
}

bool frmService::PanelVisible(Panel panel) const {
  return panel != Panel::kBounceControl || state_->bounce.PanelVisible();
}

void frmService::SetPanel(Panel panel, const std::string& text) {
  state_->panels[static_cast<std::size_t>(panel)] = text;
}

int frmService::ItemListVersion() const {
  return state_->itemListVersion;
}

void frmService::RefreshItemList() {
  ++state_->itemListVersion;
}

void frmService::UpdateOutputsNow() {
  UpdateOutputs(true);
}

bool frmService::UpdateRunning() const {
  return state_->outputsInHand;
}

}  // namespace zeb
