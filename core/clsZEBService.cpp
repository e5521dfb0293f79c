#include "core/clsZEBService.h"

#include <algorithm>
#include <utility>

#include "diagnostics/hxGeneral.h"

namespace zeb {

clsZEBService::clsZEBService(Environment& environment, OutputFactory makeOutput, ServiceEvents& events)
    : environment_(environment),
      makeOutput_(std::move(makeOutput)),
      events_(events),
      cycle_(environment, events) {
  for (std::size_t i = 0; i < kMaxNextItems; ++i) {
    nextItems_[i].ItemIndexNumber = static_cast<std::int16_t>(i + 1);
    previousItems_[i].ItemIndexNumber = static_cast<std::int16_t>(i + 1);
  }
}

clsZEBService::~clsZEBService() = default;

// ---- Items

void clsZEBService::SetItemCount(int count) {
  itemCount_ = std::clamp(count, 1, kMaxNextItems);
  ++itemsVersion_;
}

void clsZEBService::SetCurrentItem(const clsZEBItemInfo& item) {
  clsZEBItemInfo arriving = item.Copy();  // first: `item` may be one of the slots that move
  if (currentItem_->ItemType > 0) {
    const auto last = previousItems_.begin() + (itemCount_ - 1);
    std::move_backward(previousItems_.begin(), last, last + 1);
    previousItems_[0] = std::move(currentItem_);
  }
  currentItem_ = std::move(arriving);
  ++itemsVersion_;
}

void clsZEBService::SetComingSoonItem(const clsZEBItemInfo& item) {
  comingSoonItem_ = item.Copy();
  ++itemsVersion_;
}

const clsZEBItemInfo* clsZEBService::NextItem(int index) const {
  return HasSlot(index) ? &nextItems_[static_cast<std::size_t>(index) - 1] : nullptr;
}

void clsZEBService::SetNextItem(int index, const clsZEBItemInfo& item) {
  if (!HasSlot(index)) return;
  nextItems_[static_cast<std::size_t>(index) - 1] = item.Copy();
  ++itemsVersion_;
}

const clsZEBItemInfo* clsZEBService::PreviousItem(int index) const {
  return HasSlot(index) ? &previousItems_[static_cast<std::size_t>(index) - 1] : nullptr;
}

void clsZEBService::SetPreviousItem(int index, const clsZEBItemInfo& item) {
  if (!HasSlot(index)) return;
  previousItems_[static_cast<std::size_t>(index) - 1] = item.Copy();
  ++itemsVersion_;
}

// ---- Outputs

int clsZEBService::AddOutput(OutputType type, OutputPtr output) {
  const auto typeCode = static_cast<std::int32_t>(type);
  if (!IsTypeCode(typeCode) || !output) return 0;
  SetOutput(type, OutputCount(typeCode) + 1, std::move(output));
  return OutputCount(typeCode);
}

void clsZEBService::RemoveOutput(OutputType type, int index) {
  if (!Output(type, index)) return;
  std::vector<RunnerPtr> runners = cycle_.Runners(type);
  runners.erase(runners.begin() + (index - 1));
  cycle_.SetRunners(type, std::move(runners));
}

OutputPtr clsZEBService::Output(OutputType type, int index) const {
  if (index < 1 || index > OutputCount(static_cast<std::int32_t>(type))) return nullptr;
  return cycle_.Runners(type)[static_cast<std::size_t>(index) - 1]->output;
}

void clsZEBService::SetOutput(OutputType type, int index, OutputPtr output) {
  if (index < 1 || !output) return;
  std::vector<RunnerPtr> runners = cycle_.Runners(type);
  RunnerPtr runner = cycle_.MakeRunner(type, std::move(output));
  if (index <= std::ssize(runners))
    runners[static_cast<std::size_t>(index) - 1] = std::move(runner);
  else
    runners.push_back(std::move(runner));
  cycle_.SetRunners(type, std::move(runners));
}

std::optional<OutputName> clsZEBService::PlaceOf(const OutputPtr& output) const {
  for (const OutputTypeInfo& info : kOutputTypes) {
    const std::vector<RunnerPtr>& runners = cycle_.Runners(info.type);
    const auto found = std::find_if(runners.begin(), runners.end(),
                                    [&](const RunnerPtr& runner) { return runner->output == output; });
    if (found != runners.end()) return OutputName{info.type, static_cast<int>(found - runners.begin()) + 1};
  }
  return std::nullopt;
}

int clsZEBService::OutputCount(std::int32_t typeCode) const {
  return IsTypeCode(typeCode) ? static_cast<int>(cycle_.Runners(static_cast<OutputType>(typeCode)).size())
                              : 0;
}

int clsZEBService::TotalNumberOutputs() const {
  int total = 0;
  for (std::int32_t typeCode = 1; typeCode <= kNumberOutputTypes; ++typeCode) total += OutputCount(typeCode);
  return total;
}

std::int32_t clsZEBService::OutputUpdateInterval(std::int32_t typeCode) const {
  return IsTypeCode(typeCode) ? cycle_.Interval(static_cast<OutputType>(typeCode)) : 0;
}

void clsZEBService::SetOutputUpdateInterval(std::int32_t typeCode, std::int32_t seconds) {
  if (IsTypeCode(typeCode)) cycle_.SetInterval(static_cast<OutputType>(typeCode), seconds);
}

void clsZEBService::ClearService() {
  {
    const Trace trace("ZEBService.ClearService");
    if (serviceNumber_ == 0) {
      trace.ExitAs("no Service Number");
      return;
    }
    cycle_.EndAll();
    for (const OutputType type : kClearingOrder) {
      int index = 0;
      for (const OutputPtr& output : cycle_.Clear(type)) {
        DebugLine("Clearing ", NameOf(type), " Output ", ++index);
        Guarded("stopping an output", [&] { output->StopOutput(); });
      }
    }
  }
  Guarded("telling that the service is closed", [this] { events_.ServiceClosed(); });
}

// ---- What is published

SnapshotPtr clsZEBService::TakeSnapshot() const {
  const auto snapshot = std::make_shared<ServiceSnapshot>();
  snapshot->moment = environment_.loop.Now();
  snapshot->information = information_;
  snapshot->arrived = informationArrived_;
  snapshot->serviceNumber = serviceNumber_;
  snapshot->ServiceName = settings.ServiceName;
  snapshot->NoPictureFileName = settings.NoPictureFileName;
  snapshot->LoggingPath = settings.LoggingPath;
  snapshot->PresenterReference = PresenterReference;
  snapshot->PresenterFullName = PresenterFullName;
  snapshot->ShowReference = ShowReference;
  snapshot->ShowTitle = ShowTitle;
  snapshot->currentItem = currentItem_;
  snapshot->comingSoonItem = comingSoonItem_;
  snapshot->nextItems.assign(nextItems_.begin(), nextItems_.begin() + std::ptrdiff_t{itemCount_});
  snapshot->previousItems.assign(previousItems_.begin(), previousItems_.begin() + std::ptrdiff_t{itemCount_});
  return snapshot;
}

std::string clsZEBService::GetSpecialElementByName(std::string_view name) const {
  return TakeSnapshot()->GetSpecialElementByName(name);
}

}  // namespace zeb
