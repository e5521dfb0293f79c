#include "app/frmService.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <utility>

#include "app/OutputJournal.h"
#include "app/ServiceHistory.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/OutputTable.h"
#include "sources/BounceRelay.h"
#include "sources/InfoFileSource.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kTickInterval = 1000ms;
constexpr Duration kUpdateDelay = 1500ms;          // after the last information
constexpr Duration kLongestUpdateDelay = 10000ms;  // after the first that is not published
constexpr Duration kListenRetry = 30s;
// How long a service that closes lets its outputs go on, and then how long they may take to give up.
constexpr Duration kClosePatience = 2s;
constexpr std::int32_t kFirstControlPort = 6900;
constexpr std::int32_t kHighestPort = 65535;
constexpr std::int32_t kSourceControlLink = 0;

constexpr const char* kNoController = "No controller connected";
const std::string kWaiting = "Information Update received, waiting..";
const std::string kUpdating = "Information Update received, updating..";
const std::string kNothing;
constexpr const char* kForcing = "Forcing Information Update, waiting..";
constexpr const char* kTravelFlagActive = "TravelFlagActive";

}  // namespace

struct frmService::State {
  State(Environment& givenEnvironment, OutputFactory makeOutput, ServiceEvents& events, IntakeWindow& window,
        uNetControlServer::Events serverEvents, StationBoard::Window boardWindow,
        std::shared_ptr<HistoryRecorder> recorder, std::function<std::string()> sourceText)
      : environment(givenEnvironment),
        service(givenEnvironment, std::move(makeOutput), events),
        intake(service, window),
        link(intake, givenEnvironment.carts),
        server(givenEnvironment, std::move(serverEvents)),
        infoFile(std::make_shared<InfoFileSource>(givenEnvironment, intake)),
        bounce(service, window, [this] { server.SendToController("GET_INFORMATION"); }),
        journal(service),
        board(service, std::move(boardWindow)),
        history(service, std::move(recorder), std::move(sourceText)) {}

  Environment& environment;
  clsZEBService service;
  ItemIntake intake;
  ControlLink link;
  uNetControlServer server;
  std::shared_ptr<InfoFileSource> infoFile;
  BounceRelay bounce;
  OutputJournal journal;
  StationBoard board;
  ServiceHistory history;

  std::array<std::string, 4> panels;
  int itemListVersion = 0;
  Timer tmrUpdateOutputs;
  Timer delayedUpdate;  // the tick at exactly the moment at which a delayed update falls due
  Timer listenRetry;
  enum class Stage { kNew, kOpen, kClosing, kClosed } stage = Stage::kNew;
  // Information that no update has taken up yet: when the first and the last of it came.
  struct Unpublished {
    MonotonicTime first, last;
    MonotonicTime Due() const { return std::min(last + kUpdateDelay, first + kLongestUpdateDelay); }
  };
  std::optional<Unpublished> unpublished;
  std::uint16_t controlPort = 0;
  bool byHand = false;   // what is taken in at this moment is manual entry
  std::string noSource;  // why the service hears nothing; "": it has a source
};

std::shared_ptr<frmService> frmService::Create(Environment& environment, OutputFactory makeOutput,
                                               std::shared_ptr<HistoryRecorder> history) {
  return std::shared_ptr<frmService>(new frmService(environment, std::move(makeOutput), std::move(history)));
}

frmService::frmService(Environment& environment, OutputFactory makeOutput,
                       std::shared_ptr<HistoryRecorder> history)
    : state_(std::make_unique<State>(environment, std::move(makeOutput), static_cast<ServiceEvents&>(*this),
                                     static_cast<IntakeWindow&>(*this), ServerEvents(), BoardWindow(),
                                     std::move(history), [this] { return SourceText(); })) {
  state_->link.currentItemNearEnd = [this] { SendNearEnd(); };
  state_->link.relay = [this](int index, std::string_view line) {
    return state_->bounce.Relay(line, index > 0);
  };
  state_->bounce.controllerName = [this] { return state_->server.ControllerName(); };
}

frmService::~frmService() = default;

// ---- Opening and closing

void frmService::Open(int number) {
  State& state = *state_;
  if (state.stage != State::Stage::kNew) return;
  state.stage = State::Stage::kOpen;
  SetPanel(Panel::kNetControl, kNoController);
  state.service.SetItemCount(kMaxNextItems);
  state.service.SetServiceNumber(number);
  if (!state.environment.publishes) return;
  OpenSource();
  state.tmrUpdateOutputs = state.environment.loop.Every(kTickInterval, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Tick();
  });
  for (const OutputTypeInfo& info : kOutputTypes)
    for (int i = 1; i <= state.service.OutputCount(static_cast<std::int32_t>(info.type)); ++i)
      StartOutput(info.type, i);
  // The flag was on when the program ended: whoever saw it go on must see it end.
  if (state.service.settings.TravelFlagActive) state.service.SetTravelFlagCleared();
}

// What is under way may end by itself, then is given up, then is left behind: closing never waits for a
// worker or a server that hangs.
void frmService::Close() {
  State& state = *state_;
  if (state.stage >= State::Stage::kClosing) return;
  state.stage = State::Stage::kClosing;
  state.tmrUpdateOutputs.Stop();
  state.delayedUpdate.Stop();
  state.listenRetry.Stop();
  state.server.Close();
  state.infoFile->Close();
  state.bounce.Close();
  state.service.BeginStopping();
  state.intake.EndTravelFlag();
  state.environment.loop.Start("close", [self = shared_from_this()] {
    State& closing = *self->state_;
    const auto idle = [&closing] { return !closing.service.UpdateInProgress(); };
    if (!closing.environment.loop.WaitUntil(idle, kClosePatience)) {
      closing.service.CancelOutputs();
      closing.environment.loop.WaitUntil(idle, kClosePatience);
    }
    if (closing.environment.publishes) self->RememberTravelFlag();
    closing.service.ClearService();
    closing.stage = State::Stage::kClosed;
  });
}

Outcome frmService::Reload() {
  State& state = *state_;
  if (state.stage != State::Stage::kOpen) return {};
  const std::string name = state.service.settings.ServiceName;
  const Result<clsZEBService::Changes> changes = state.service.ReadAgain();
  if (!changes) return Failure{"the settings of '" + name + "' stay as they were: " + changes.Reason()};
  state.board.Changed();
  if (!state.environment.publishes) return {};
  OpenSource();
  for (const auto& [type, index] : changes.Value().added) {
    StartOutput(type, index);
    state.service.ShowPresentTo(type, index);
  }
  state.board.Changed();
  return {};
}

void frmService::StartOutput(OutputType type, int index) {
  state_->service.StartOutput(type, index, MakeControl(state_->environment, type));
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
  NoteWithoutSource();
}

// A service that can hear nothing will never publish anything; its operator should know why.
void frmService::NoteWithoutSource() {
  State& state = *state_;
  const ServiceSettings& settings = state.service.settings;
  std::string note;
  if (settings.InfoSourceType == kSourceControlLink && state.controlPort == 0)
    note = "it has no control port (TolvanTCPControlPort is " +
           std::to_string(settings.TolvanTCPControlPort) + "), so nothing will be received";
  else if (settings.InfoSourceType != kSourceControlLink && !InfoFileSource::Polls(settings.InfoSourceType))
    note = "its source type " + std::to_string(settings.InfoSourceType) +
           " is none that this program has, so nothing will be received";
  else if (InfoFileSource::Polls(settings.InfoSourceType) && settings.InfoSourceFileName.empty())
    note = "it has no information file (InfoSourceFileName is empty), so nothing will be received";
  if (!note.empty() && note != state.noSource) state.journal.Note(note);
  state.noSource = note;
}

// A port that is taken may come free (a program that is being replaced ends), so it is tried again.
void frmService::Listen() {
  State& state = *state_;
  state.listenRetry.Stop();
  if (state.stage != State::Stage::kOpen || state.controlPort == 0 || state.server.Listen(state.controlPort))
    return;
  state.listenRetry = state.environment.loop.After(kListenRetry, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->Listen();
  });
}

uNetControlServer::Events frmService::ServerEvents() {
  uNetControlServer::Events events;
  events.ControllerTookControl = [this](const std::string& controller) {
    const auto self = shared_from_this();
    SetPanel(Panel::kNetControl, controller + " has Control");
    state_->bounce.ControllerTookControl();
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

// ---- What is to be seen

StationBoard::Window frmService::BoardWindow() {
  StationBoard::Window window;
  window.source = [this] { return SourceNow(); };
  window.panel = [this](Panel panel) -> const std::string& { return PanelText(panel); };
  return window;
}

SourceState frmService::SourceNow() const {
  const State& state = *state_;
  const ServiceSettings& settings = state.service.settings;
  SourceState source;
  source.text = state.noSource;
  if (InfoFileSource::Polls(settings.InfoSourceType)) {
    source.kind = SourceState::Kind::kFile;
    if (!source.text.empty()) return source;
    const std::string problem = state.infoFile->Problem();
    source.healthy = problem.empty();
    source.text = problem.empty() ? "'" + settings.InfoSourceFileName + "'" : problem;
  } else if (state.controlPort != 0) {
    source.kind = SourceState::Kind::kControlLink;
    source.healthy = state.server.Listening();
    source.controller = state.server.ControllerName();
    source.connections = state.server.ConnectionCount();
    source.text = "port " + std::to_string(state.controlPort);
    if (const Outcome listens = state.server.ListenState(); !listens)
      source.text = listens.Reason() + "; tried again every " + std::to_string(kListenRetry / 1s) + " s";
    else if (!source.healthy)
      source.text += " is not listened on";
  }
  return source;
}

// For the history: who gave an item.
std::string frmService::SourceText() const {
  if (state_->byHand) return "manual entry";
  const SourceState source = SourceNow();
  return source.controller.empty() ? source.text : source.text + ", " + source.controller;
}

const StationBoard& frmService::Board() const {
  return state_->board;
}

StationBoard& frmService::Board() {
  return state_->board;
}

void frmService::SetZEBInformation(std::string_view message) {
  State& state = *state_;
  if (state.stage != State::Stage::kOpen || !state.environment.publishes) return;
  state.byHand = true;
  state.link.MessageFromController(0, message);
  state.byHand = false;
}

// ---- Updates

void frmService::Tick() {
  State& state = *state_;
  if (state.stage != State::Stage::kOpen) return;
  state.intake.CheckTravelFlag();
  RememberTravelFlag();
  if (state.unpublished && state.environment.loop.Monotonic() >= state.unpublished->Due())
    UpdateOutputs(true);
  else if (state.service.PeriodicUpdateDue())
    UpdateOutputs(false);
}

void frmService::InformationReceived() {
  State& state = *state_;
  const MonotonicTime now = state.environment.loop.Monotonic();
  state.unpublished = {state.unpublished ? state.unpublished->first : now, now};
  state.board.WindowChanged();
  if (state.stage != State::Stage::kOpen) return;
  state.delayedUpdate =
      state.environment.loop.After(state.unpublished->Due() - now, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->Tick();
      });
}

void frmService::UpdateOutputs(bool full) {
  State& state = *state_;
  if (state.stage != State::Stage::kOpen) return;
  const auto self = shared_from_this();
  if (full) {
    if (state.unpublished) state.service.NoteInformationMoment(state.unpublished->first);
    state.unpublished.reset();
    state.delayedUpdate.Stop();
  }
  state.intake.CheckTravelFlag();
  SetPanel(Panel::kInformation, kUpdating);
  state.history.LookAtItems();
  state.service.UpdateOutputs(full);
  state.history.Updating(full ? UpdateCause::kInformation : UpdateCause::kInterval);
  state.board.Changed();
  ShowUpdateState();
}

// What the panel says once an update, or a part of it, is through.
void frmService::ShowUpdateState() {
  const State& state = *state_;
  SetPanel(Panel::kInformation, state.unpublished                  ? kWaiting
                                : state.service.UpdateInProgress() ? kUpdating
                                                                   : kNothing);
  RefreshItemList();
}

void frmService::UpdateThrough(const UpdateRecord& record) {
  if (record.cause == UpdateCause::kInformation) state_->journal.NoteUpdate(record);
  ShowUpdateState();
}

void frmService::UpdateFinished() {
  ShowUpdateState();
}

void frmService::UpdateWaits(const UpdateRecord& record) {
  if (record.cause == UpdateCause::kInformation) state_->journal.NoteWaiting(record);
}

void frmService::OutputUpdateStarting(int index, OutputType type) {
  state_->board.OutputChanged(type, index);
}

void frmService::OutputUpdateFinished(int index, OutputType type) {
  state_->journal.Check(type, index);
  state_->board.OutputChanged(type, index);
}

void frmService::OutputStarted(int index, OutputType type) {
  state_->journal.Check(type, index);
  state_->board.OutputChanged(type, index);
}

void frmService::OutputRunEnded(const UpdateRecord& record, const UpdateRun& run) {
  state_->board.RunEnded(record, run);
  state_->history.RunEnded(record, run);
}

void frmService::ForceUpdate() {
  if (state_->environment.publishes) state_->intake.NoteInformation(kForcing);
}

// ---- Cues

void frmService::SendTravelFlag(bool active) {
  State& state = *state_;
  if (active) {
    state.service.SetTravelFlagActivated();
    StoreTravelFlag(true);
  } else {
    state.service.SetTravelFlagCleared();
  }
}

// The store says that the flag is on until its end has left every output, whatever happens meanwhile.
void frmService::RememberTravelFlag() {
  const State& state = *state_;
  if (state.service.settings.TravelFlagActive && !state.intake.TravelFlagActive() &&
      !state.service.TravelCueOwed())
    StoreTravelFlag(false);
}

void frmService::StoreTravelFlag(bool active) {
  State& state = *state_;
  if (state.service.settings.TravelFlagActive == active) return;
  try {
    state.environment.hive.WriteNumber(state.environment.ServiceKey(state.service.ServiceNumber()),
                                       kTravelFlagActive, active ? 1 : 0);
    state.service.settings.TravelFlagActive = active;
  } catch (const std::exception&) {
    ReportException("storing the travel flag", Report::kQuietly);
  }
}

void frmService::SendNearEnd() {
  if (state_->stage == State::Stage::kOpen) state_->service.CurrentItemNearEnd();
}

// ---- What the window shows

clsZEBService& frmService::service() {
  return state_->service;
}

bool frmService::IsOpen() const {
  return state_->stage == State::Stage::kOpen;
}

bool frmService::Closed() const {
  return state_->stage == State::Stage::kClosed;
}

const std::string& frmService::PanelText(Panel panel) const {
  return state_->panels[static_cast<std::size_t>(panel)];
}

bool frmService::PanelVisible(Panel panel) const {
  return panel != Panel::kBounceControl || state_->bounce.PanelVisible();
}

void frmService::SetPanel(Panel panel, const std::string& text) {
  std::string& shown = state_->panels[static_cast<std::size_t>(panel)];
  if (shown == text) return;
  shown = text;
  state_->board.WindowChanged();
}

int frmService::ItemListVersion() const {
  return state_->itemListVersion;
}

void frmService::RefreshItemList() {
  ++state_->itemListVersion;
  state_->history.LookAtItems();
  state_->board.WindowChanged();
}

void frmService::UpdateOutputsNow() {
  UpdateOutputs(true);
}

// Outputs that are free may be updated at any time; one that is busy shows the newest items when it is free.
bool frmService::UpdateRunning() const {
  return state_->stage != State::Stage::kOpen;
}

}  // namespace zeb
