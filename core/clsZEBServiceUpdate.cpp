// The update cycle and the cues of clsZEBService.
#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <utility>

#include "core/Counted.h"
#include "core/clsZEBService.h"
#include "diagnostics/hxGeneral.h"
#include "text/LetterCase.h"

namespace zeb {

namespace {

// So long an update or cue waits for another one of its type; no output takes as long unless it hangs.
constexpr Duration kLongestWait = std::chrono::minutes(5);
constexpr std::size_t kMaxWaiting = 16;  // cues of a type; what comes on top is out of date before its turn

constexpr const char* kCueCommand = "CMD";
constexpr const char* kNearEndText = "SAE\r\n";

std::string_view NameOf(OutputType type) {
  const OutputTypeInfo* info = FindOutputType(static_cast<std::int32_t>(type));
  return info ? info->name : std::string_view();
}

void LogUpdateStarted(std::int32_t typeCode, const clsZEBItemInfo& current) {
  if (!DebugLevelAllows(5)) return;
  WriteDebugLine("Started ZEBService.UpdateOutputType(" + std::to_string(typeCode) + "): '" +
                     current->ItemName + "' by '" + current->Artists + "'",
                 5, LineKind::kStarted);
}

}  // namespace

// One update's or cue's turn with the outputs of a type: first come, first served. Given back by the
// destructor, on whatever way the turn ends.
class clsZEBService::Turn {
 public:
  Turn(clsZEBService& service, TypeState& state)
      : service_(service), state_(state), generation_(service.generation_), ticket_(++service.lastTicket_) {}
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  ~Turn() {
    if (Cleared()) return;  // it is no longer this turn that is waited for
    auto& waiting = state_.waiting;
    waiting.erase(std::remove(waiting.begin(), waiting.end(), ticket_), waiting.end());
    if (taken_) state_.busy = false;
  }

  // False: the service was cleared meanwhile, or those before would not end.
  bool Take() {
    if (state_.busy || !state_.waiting.empty()) {
      state_.waiting.push_back(ticket_);
      service_.environment_.loop.WaitUntil([this] { return Cleared() || IsNext(); }, kLongestWait);
      if (Cleared() || !IsNext()) return false;
      state_.waiting.erase(state_.waiting.begin());
    }
    state_.busy = true;
    taken_ = true;
    return true;
  }

  bool Cleared() const { return generation_ != service_.generation_; }

 private:
  bool IsNext() const { return !state_.busy && !state_.waiting.empty() && state_.waiting.front() == ticket_; }

  clsZEBService& service_;
  TypeState& state_;
  const std::uint64_t generation_, ticket_;
  bool taken_ = false;
};

// ---- Updates

bool clsZEBService::TypeIsDue(const TypeState& state) const {
  if (state.outputs.empty() || state.interval <= 0) return false;
  return !state.lastUpdate ||
         environment_.loop.Monotonic() - *state.lastUpdate > std::chrono::seconds(state.interval);
}

bool clsZEBService::PeriodicUpdateDue() const {
  return std::any_of(types_.begin(), types_.end(),
                     [this](const TypeState& state) { return TypeIsDue(state); });
}

void clsZEBService::UpdateOutputs(bool full) {
  const Trace trace("ZEBService.UpdateOutputs");
  if (full) {
    DebugLine("Doing FULL Update");
    if (settings.LastUpdateOnServerIndex < settings.NumberUpdatesOnServer)
      ++settings.LastUpdateOnServerIndex;
    else
      settings.LastUpdateOnServerIndex = 1;
  }
  const std::uint64_t generation = generation_;
  for (std::int32_t typeCode = 1; typeCode <= kNumberOutputTypes; ++typeCode) {
    if (generation_ != generation) {
      trace.ExitAs("service cleared");
      return;
    }
    const TypeState& state = *FindState(typeCode);
    if (full ? !state.outputs.empty() : TypeIsDue(state)) UpdateOutputType(typeCode);
  }
}

void clsZEBService::UpdateOutputType(std::int32_t typeCode) {
  TypeState* state = FindState(typeCode);
  if (!state) return;
  LogUpdateStarted(typeCode, currentItem_);
  {
    const Counted inProgress(updatesInProgress_);
    Guarded("telling that an update starts", [this] { events_.UpdateStarted(); });
    Guarded("updating the outputs", [&] { UpdateInTurn(static_cast<OutputType>(typeCode), *state); });
  }
  Guarded("telling that an update has finished", [this] { events_.UpdateFinished(); });
  WriteDebugLine("Finished ZEBService.UpdateOutputType", 5, LineKind::kFinished);
}

void clsZEBService::UpdateInTurn(OutputType type, TypeState& state) {
  Turn turn(*this, state);
  if (!turn.Take()) {
    if (!turn.Cleared()) NoteGivenUp("An update", type);
    return;
  }
  RunThreePhases(
      type, "Update", [this](clsZEBTemplate& output) { output.UpdateOutput(*this); }, true);
  if (!turn.Cleared()) state.lastUpdate = environment_.loop.Monotonic();
}

void clsZEBService::RunThreePhases(OutputType type, std::string_view logName, const OutputWork& update,
                                   bool updateEvents) {
  using Events = ServiceEvents;
  const std::array<Phase, 3> phases = {{
      {"Preparing ", [this](clsZEBTemplate& output) { output.PrepareOutput(*this); },
       &Events::OutputUpdateStarting, nullptr},
      {"Updating ", update, updateEvents ? &Events::OutputUpdateUpdating : nullptr,
       updateEvents ? &Events::OutputUpdateUpdated : nullptr},
      {"Finishing ", [this](clsZEBTemplate& output) { output.FinishOutput(*this); }, nullptr,
       &Events::OutputUpdateFinished},
  }};
  // A copy, since any operation may wait, and outputs may come and go meanwhile.
  const std::vector<OutputPtr> outputs = StateOf(type).outputs;
  for (const Phase& phase : phases)
    for (std::size_t i = 0; i < outputs.size(); ++i) RunPhase(type, logName, phase, outputs[i], i);
}

void clsZEBService::RunPhase(OutputType type, std::string_view logName, const Phase& phase,
                             const OutputPtr& output, std::size_t formerPlace) {
  const int index = IndexOf(type, output, formerPlace);
  if (index == 0) return;  // removed meanwhile
  std::string step(phase.verb);
  step.append(NameOf(type)).append(" ").append(std::to_string(index));
  DebugLine(logName, " - ", step);
  Tell(phase.before, index, type);
  step.front() = AsciiLower(step.front());
  const bool done = Guarded(step, [&] { phase.work(*output); });
  // What fails without a word of its own must not go on showing OK.
  if (!done) Guarded(step, [&] { output->SetStatus(kStatusError); });
  const int indexNow = IndexOf(type, output, formerPlace);
  if (indexNow != 0) Tell(phase.after, indexNow, type);
}

void clsZEBService::Tell(OutputEvent event, int index, OutputType type) const {
  if (event) Guarded("telling of an output's update", [&] { (events_.*event)(index, type); });
}

int clsZEBService::IndexOf(OutputType type, const OutputPtr& output, std::size_t formerPlace) const {
  const std::vector<OutputPtr>& outputs = StateOf(type).outputs;
  if (formerPlace < outputs.size() && outputs[formerPlace] == output)
    return static_cast<int>(formerPlace) + 1;
  const auto found = std::find(outputs.begin(), outputs.end(), output);
  return found == outputs.end() ? 0 : static_cast<int>(std::distance(outputs.begin(), found)) + 1;
}

// ---- Cues

void clsZEBService::CurrentItemNearEnd() {
  const Trace trace("ZEBService.CurrentItemNearEnd");
  SendCue(OutputType::kEncoder, "PreCue", true, [](clsZEBTemplate& output) {
    if (auto* encoder = dynamic_cast<ScriptCommandOutput*>(&output))
      encoder->SendScriptCommand(kCueCommand, kNearEndText);
  });
  SendCue(OutputType::kSerial, "PreCue", true, [this](clsZEBTemplate& output) {
    if (auto* serial = dynamic_cast<StringOutput*>(&output)) serial->SendString(*this, kNearEndText);
  });
}

void clsZEBService::SetTravelFlagActivated() {
  const Trace trace("ZEBService.SetTravelFlagActivated");
  SendCue(OutputType::kSerial, "Update", false, [this](clsZEBTemplate& output) {
    if (auto* serial = dynamic_cast<StringOutput*>(&output)) serial->SetTravelFlagActivated(*this);
  });
}

void clsZEBService::SetTravelFlagCleared() {
  const Trace trace("ZEBService.SetTravelFlagCleared");
  SendCue(OutputType::kSerial, "Update", false, [this](clsZEBTemplate& output) {
    if (auto* serial = dynamic_cast<StringOutput*>(&output)) serial->SetTravelFlagCleared(*this);
  });
}

void clsZEBService::SendCue(OutputType type, std::string_view logName, bool updateEvents,
                            const OutputWork& send) {
  Guarded("sending a cue", [&] {
    TypeState& state = StateOf(type);
    if (state.outputs.empty()) return;
    Turn turn(*this, state);
    if (state.waiting.size() >= kMaxWaiting || !turn.Take()) {
      if (!turn.Cleared()) NoteGivenUp("A cue", type);
      return;
    }
    RunThreePhases(type, logName, send, updateEvents);
  });
}

// ---- Failures

bool clsZEBService::Guarded(std::string_view what, const std::function<void()>& work) const {
  try {
    work();
    return true;
  } catch (const std::exception&) {
    ReportException(what, true);
    return false;
  }
}

void clsZEBService::NoteGivenUp(std::string_view what, OutputType type) const {
  std::string line = settings.ServiceName;
  line.append(": ").append(what).append(" was dropped, since those before it keep the ").append(NameOf(type));
  line += " outputs busy";
  DebugLine(line);
  environment_.person.Note(line);
}

}  // namespace zeb
