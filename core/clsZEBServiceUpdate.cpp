// The updates and cues of clsZEBService.
#include <exception>
#include <optional>
#include <utility>

#include "core/clsZEBService.h"
#include "diagnostics/hxGeneral.h"

namespace zeb {

bool clsZEBService::PeriodicUpdateDue() const {
  for (const OutputTypeInfo& info : kOutputTypes)
    if (cycle_.IsDue(info.type)) return true;
  return false;
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
  std::vector<OutputType> types;
  for (std::int32_t typeCode = 1; typeCode <= kNumberOutputTypes; ++typeCode) {
    const auto type = static_cast<OutputType>(typeCode);
    if (full ? OutputCount(typeCode) > 0 : cycle_.IsDue(type)) types.push_back(type);
  }
  Publish(types, full ? UpdateCause::kInformation : UpdateCause::kInterval);
}

void clsZEBService::UpdateOutputType(std::int32_t typeCode) {
  if (IsTypeCode(typeCode)) Publish({static_cast<OutputType>(typeCode)}, UpdateCause::kInformation);
}

void clsZEBService::Publish(const std::vector<OutputType>& types, UpdateCause cause) {
  if (cause == UpdateCause::kInformation) {
    ++information_;
    informationArrived_ =
        std::exchange(informationMoment_, std::nullopt).value_or(environment_.loop.Monotonic());
  }
  lastSnapshot_ = TakeSnapshot();
  cycle_.Update(types, lastSnapshot_, cause);
}

bool clsZEBService::OutputBusy(OutputType type, int index) const {
  const auto& runners = cycle_.Runners(type);
  return index >= 1 && index <= static_cast<int>(runners.size()) &&
         runners[static_cast<std::size_t>(index) - 1]->busy;
}

int clsZEBService::WaitingFor(OutputType type, int index) const {
  const auto& runners = cycle_.Runners(type);
  if (index < 1 || index > static_cast<int>(runners.size())) return 0;
  const OutputRunner& runner = *runners[static_cast<std::size_t>(index) - 1];
  const std::size_t waiting =
      runner.cues.size() + runner.later.size() + (runner.wanted == OutputRunner::Wanted::kNo ? 0 : 1);
  return static_cast<int>(waiting);
}

void clsZEBService::ShowPresentTo(OutputType type, int index) {
  if (!lastSnapshot_ || !Output(type, index)) return;
  cycle_.Show(cycle_.Runners(type)[static_cast<std::size_t>(index) - 1], lastSnapshot_);
}

// ---- Cues

void clsZEBService::CurrentItemNearEnd() {
  const Trace trace("ZEBService.CurrentItemNearEnd");
  SendCue(OutputType::kEncoder, Cue::kNearEnd);
  SendCue(OutputType::kSerial, Cue::kNearEnd);
}

void clsZEBService::SetTravelFlagActivated() {
  const Trace trace("ZEBService.SetTravelFlagActivated");
  SendCue(OutputType::kSerial, Cue::kTravelOn);
}

void clsZEBService::SetTravelFlagCleared() {
  const Trace trace("ZEBService.SetTravelFlagCleared");
  SendCue(OutputType::kSerial, Cue::kTravelOff);
}

void clsZEBService::SendCue(OutputType type, Cue::Kind kind) {
  if (OutputCount(static_cast<std::int32_t>(type)) == 0) return;
  cycle_.SendCue(type, {kind, TakeSnapshot()});
  environment_.loop.Yield();  // the encoders' cue is through before the serial outputs' begins, if none waits
}

bool clsZEBService::Guarded(std::string_view what, const std::function<void()>& work) {
  try {
    work();
    return true;
  } catch (const std::exception&) {
    ReportException(what, Report::kQuietly);
    return false;
  }
}

}  // namespace zeb
