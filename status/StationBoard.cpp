#include "status/StationBoard.h"

#include <algorithm>
#include <utility>

#include "platform/EventLoop.h"
#include "platform/Operator.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

// A problem of what the public sees names an address and two texts.
constexpr std::size_t kMostProblemCharacters = 500;
constexpr const char* kElsewhere = "runs elsewhere";

// Up to the last slot that holds something.
std::vector<clsZEBItemInfo> Filled(const clsZEBService& service,
                                   const clsZEBItemInfo* (clsZEBService::*slot)(int) const) {
  std::vector<clsZEBItemInfo> items;
  std::size_t filled = 0;
  for (int i = 1; i <= service.ItemCount(); ++i) {
    items.push_back(*(service.*slot)(i));
    if (!items.back().HoldsNothing()) filled = items.size();
  }
  items.resize(filled);
  return items;
}

Severity SeverityOf(clsZEBTemplate& output, bool busy) {
  if (output.Fails()) return Severity::kFailing;
  if (busy) return Severity::kBusy;
  switch (output.Status()) {
    case kStatusOff:
      return Severity::kOff;
    case kStatusConnecting:
    case kStatusConnected:
    case kStatusLoggingOn:
      return Severity::kBusy;
    default:
      return Severity::kOk;
  }
}

}  // namespace

StationBoard::StationBoard(clsZEBService& service, Window window)
    : service_(service), window_(std::move(window)) {}

// ---- What happens

void StationBoard::OutputChanged(OutputType type, int index) {
  if (const OutputPtr output = service_.Output(type, index)) Look(output);
  TellSoon();
}

void StationBoard::RunEnded(const UpdateRecord& record, const UpdateRun& run) {
  Known& known = Look(run.output);
  if (run.tally.failed > 0) ++known.failures;
  if (run.tally.published > 0) {
    ++known.publications;
    known.published = service_.environment().loop.Now();
    if (record.snapshot->information > (known.shows ? known.shows->information : 0)) {
      known.latency = service_.environment().loop.Monotonic() - record.snapshot->arrived;
      known.latencies.Add(*known.latency);
    }
    LookAtAir(run.output, *record.snapshot);
  }
  if (run.tally.failed == 0 && run.tally.givenUp == 0 && !run.output->Fails()) known.shows = record.snapshot;
  Look(run.output);
  TellSoon();
}

void StationBoard::Changed() {
  ForgetGone();
  for (const OutputTypeInfo& info : kOutputTypes)
    for (int i = 1; i <= service_.OutputCount(static_cast<std::int32_t>(info.type)); ++i)
      Look(service_.Output(info.type, i));
  TellSoon();
}

// Whether the public sees what has just been published.
void StationBoard::LookAtAir(const OutputPtr& output, const ServiceSnapshot& snapshot) {
  Known& known = known_[output.get()];
  std::vector<PublicPlace> places = output->PublicPlaces();
  if (places.empty()) return known.proof.reset();
  if (!known.proof)
    known.proof = std::make_unique<ProofOfAir>(service_.environment(),
                                               [this, which = output.get()] { AirChanged(which); });
  known.proof->Published(std::move(places), snapshot.arrived);
}

// One journal line when the public begins to see something else for long, and one when that ends.
void StationBoard::AirChanged(const clsZEBTemplate* output) {
  TellSoon();
  const auto found = known_.find(output);
  if (found == known_.end() || !found->second.proof) return;
  Known& known = found->second;
  const std::string problem = known.proof->Problem();
  if (problem.empty() == known.notedAirProblem.empty()) return;
  known.notedAirProblem = problem;
  for (const OutputTypeInfo& info : kOutputTypes)
    for (int i = 1; const OutputPtr one = service_.Output(info.type, i); ++i)
      if (one.get() == output)
        service_.environment().person.Note(
            OneLine(service_.settings.ServiceName) + ": " + std::string(info.name) + " " + std::to_string(i) +
            (problem.empty() ? " is seen by the public again" : ": " + problem));
}

std::vector<Trouble> StationBoard::Troubles() {
  std::vector<Trouble> troubles;
  if (!service_.environment().publishes) return troubles;
  for (const OutputTypeInfo& info : kOutputTypes)
    for (int i = 1; const OutputPtr output = service_.Output(info.type, i); ++i) {
      const Known& known = Look(output);
      std::string problem = output->ProblemText();
      if (problem.empty() && known.proof) problem = known.proof->Problem();
      if (problem.empty() && known.failingSince) problem = "it fails";
      if (problem.empty() && known.staleSince) problem = "it does not show the present item";
      if (problem.empty()) continue;
      troubles.push_back({OneLine(service_.settings.ServiceName), std::string(info.name) + std::to_string(i),
                          OneLine(problem, kMostProblemCharacters)});
    }
  return troubles;
}

void StationBoard::ForgetGone() {
  std::erase_if(known_, [](const auto& entry) { return entry.second.output.expired(); });
}

// What is remembered of an output, brought up to date.
StationBoard::Known& StationBoard::Look(const OutputPtr& output) {
  ForgetGone();
  Known& known = known_[output.get()];
  known.output = output;
  const auto keep = [&](std::optional<WallTime>& since, bool holds) {
    if (!holds)
      since.reset();
    else if (!since)
      since = service_.environment().loop.Now();
  };
  keep(known.failingSince, output->Fails());
  keep(known.staleSince, IsStale(*output, known));
  return known;
}

// Against what the last update gave all outputs to show. One that is delayed on purpose is at something
// older and right, unless it fails.
bool StationBoard::IsStale(clsZEBTemplate& output, const Known& known) const {
  const SnapshotPtr& wanted = service_.LastSnapshot();
  if (!wanted) return false;
  if (output.DelaySeconds > 0) return output.Fails();
  return !known.shows || known.shows->information < wanted->information;
}

void StationBoard::TellSoon() {
  ++version_;
  if (!onChanged || std::exchange(tellWaits_, true)) return;
  service_.environment().loop.Post([this, mark = epoch_.Now()] {
    if (!mark.Holds()) return;
    tellWaits_ = false;
    if (const auto tell = onChanged) tell();
  });
}

// ---- The picture

StationState StationBoard::State() const {
  StationState state;
  state.number = service_.ServiceNumber();
  state.name = OneLine(service_.settings.ServiceName);
  state.source = window_.source();
  state.information = window_.panel(Panel::kInformation);
  state.travel = window_.panel(Panel::kTravel);
  state.netControl = window_.panel(Panel::kNetControl);
  state.bounce = window_.panel(Panel::kBounceControl);
  state.current = service_.CurrentItem();
  state.comingSoon = service_.ComingSoonItem();
  state.next = Filled(service_, &clsZEBService::NextItem);
  state.previous = Filled(service_, &clsZEBService::PreviousItem);
  state.presenterReference = service_.PresenterReference;
  state.presenterName = service_.PresenterFullName;
  state.showReference = service_.ShowReference;
  state.showTitle = service_.ShowTitle;
  state.updating = service_.UpdateInProgress();
  state.elsewhere = !service_.environment().publishes;
  for (std::int32_t code = 1; code <= kNumberOutputTypes; ++code)
    for (int i = 1; i <= service_.OutputCount(code); ++i)
      state.outputs.push_back(StateOf(static_cast<OutputType>(code), i));
  if (state.elsewhere) LeaveOut(state);
  return state;
}

// What an output that was never started says of itself is not how it is doing.
void StationBoard::LeaveOut(StationState& state) {
  state.netControl.clear();
  state.source = SourceState();
  state.source.text = kElsewhere;
  for (OutputState& output : state.outputs) {
    output.status = kElsewhere;
    output.severity = Severity::kOff;
    output.problem.clear();
  }
}

OutputState StationBoard::StateOf(OutputType type, int index) const {
  const OutputPtr output = service_.Output(type, index);
  OutputState state;
  state.type = type;
  state.number = index;
  state.info = OneLine(output->GetInformationString());
  state.status = output->GetStatusString(state.colour);
  state.severity = SeverityOf(*output, service_.OutputBusy(type, index));
  state.problem = OneLine(output->ProblemText());
  state.progress = output->ProgressPercent();
  state.shown = output->LastShown();
  state.waiting = service_.WaitingFor(type, index);
  const auto found = known_.find(output.get());
  if (found != known_.end() && !found->second.output.expired()) AddKnown(state, found->second);
  return state;
}

void StationBoard::AddKnown(OutputState& state, const Known& known) const {
  state.published = known.published;
  state.latency = known.latency;
  state.latencies = known.latencies;
  state.stale = known.staleSince.has_value();
  state.staleSince = known.staleSince;
  state.failingSince = known.failingSince;
  state.publications = known.publications;
  state.failures = known.failures;
  if (!known.proof) return;
  state.onAir = known.proof->OnAir();
  const std::string problem = known.proof->Problem();
  if (problem.empty() || state.severity == Severity::kFailing) return;
  state.severity = Severity::kFailing;
  state.problem = OneLine(problem, kMostProblemCharacters);
  state.failingSince = known.proof->Since();
}

}  // namespace zeb
