#include "core/clsZEBService.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/LetterCase.h"
#include "text/SharedTime.h"
#include "text/Utf8.h"

namespace zeb {

clsZEBService::clsZEBService(Environment& environment, OutputFactory makeOutput, ServiceEvents& events)
    : environment_(environment), makeOutput_(std::move(makeOutput)), events_(events) {
  for (std::size_t i = 0; i < kMaxNextItems; ++i) {
    nextItems_[i].ItemIndexNumber = static_cast<std::int16_t>(i + 1);
    previousItems_[i].ItemIndexNumber = static_cast<std::int16_t>(i + 1);
  }
}

clsZEBService::~clsZEBService() = default;

// ---- Items

void clsZEBService::SetItemCount(int count) {
  itemCount_ = std::clamp(count, 1, kMaxNextItems);
}

void clsZEBService::SetCurrentItem(const clsZEBItemInfo& item) {
  clsZEBItemInfo arriving = item.Copy();  // first: `item` may be one of the slots that move
  if (currentItem_->ItemType > 0) {
    for (std::size_t i = static_cast<std::size_t>(itemCount_) - 1; i > 0; --i)
      previousItems_[i] = previousItems_[i - 1].Copy();
    previousItems_[0] = currentItem_.Copy();
  }
  currentItem_ = std::move(arriving);
}

void clsZEBService::SetComingSoonItem(const clsZEBItemInfo& item) {
  comingSoonItem_ = item.Copy();
}

const clsZEBItemInfo* clsZEBService::NextItem(int index) const {
  return HasSlot(index) ? &nextItems_[static_cast<std::size_t>(index) - 1] : nullptr;
}

void clsZEBService::SetNextItem(int index, const clsZEBItemInfo& item) {
  if (HasSlot(index)) nextItems_[static_cast<std::size_t>(index) - 1] = item.Copy();
}

const clsZEBItemInfo* clsZEBService::PreviousItem(int index) const {
  return HasSlot(index) ? &previousItems_[static_cast<std::size_t>(index) - 1] : nullptr;
}

void clsZEBService::SetPreviousItem(int index, const clsZEBItemInfo& item) {
  if (HasSlot(index)) previousItems_[static_cast<std::size_t>(index) - 1] = item.Copy();
}

// ---- Outputs

const clsZEBService::TypeState* clsZEBService::FindState(std::int32_t typeCode) const {
  return IsTypeCode(typeCode) ? &types_[static_cast<std::size_t>(typeCode)] : nullptr;
}

clsZEBService::TypeState* clsZEBService::FindState(std::int32_t typeCode) {
  return IsTypeCode(typeCode) ? &types_[static_cast<std::size_t>(typeCode)] : nullptr;
}

int clsZEBService::AddOutput(OutputType type, OutputPtr output) {
  TypeState* state = FindState(static_cast<std::int32_t>(type));
  if (!state || !output) return 0;
  state->outputs.push_back(std::move(output));
  return static_cast<int>(state->outputs.size());
}

void clsZEBService::RemoveOutput(OutputType type, int index) {
  if (!Output(type, index)) return;
  std::vector<OutputPtr>& outputs = StateOf(type).outputs;
  outputs.erase(outputs.begin() + (index - 1));
}

OutputPtr clsZEBService::Output(OutputType type, int index) const {
  const auto typeCode = static_cast<std::int32_t>(type);
  if (index < 1 || index > OutputCount(typeCode)) return nullptr;
  return StateOf(type).outputs[static_cast<std::size_t>(index) - 1];
}

void clsZEBService::SetOutput(OutputType type, int index, OutputPtr output) {
  if (index < 1 || !output) return;
  if (Output(type, index))
    StateOf(type).outputs[static_cast<std::size_t>(index) - 1] = std::move(output);
  else
    AddOutput(type, std::move(output));
}

int clsZEBService::OutputCount(std::int32_t typeCode) const {
  const TypeState* state = FindState(typeCode);
  return state ? static_cast<int>(state->outputs.size()) : 0;
}

int clsZEBService::TotalNumberOutputs() const {
  return std::accumulate(types_.begin(), types_.end(), 0, [](int sum, const TypeState& state) {
    return sum + static_cast<int>(state.outputs.size());
  });
}

std::int32_t clsZEBService::OutputUpdateInterval(std::int32_t typeCode) const {
  const TypeState* state = FindState(typeCode);
  return state ? state->interval : 0;
}

void clsZEBService::SetOutputUpdateInterval(std::int32_t typeCode, std::int32_t seconds) {
  if (TypeState* state = FindState(typeCode)) state->interval = seconds;
}

void clsZEBService::ClearService() {
  {
    const Trace trace("ZEBService.ClearService");
    if (serviceNumber_ == 0) {
      trace.ExitAs("no Service Number");
      return;
    }
    ++generation_;  // tells what is running or waiting that its outputs are gone
    for (const OutputType type : {OutputType::kWeb, OutputType::kEncoder, OutputType::kHTTP,
                                  OutputType::kSerial, OutputType::kFile, OutputType::kDAB, OutputType::kRDS})
      ClearOutputs(type);
  }
  Guarded("telling that the service is closed", [this] { events_.ServiceClosed(); });
}

void clsZEBService::ClearOutputs(OutputType type) {
  TypeState& state = StateOf(type);
  const std::vector<OutputPtr> outputs = std::exchange(state.outputs, {});
  state.waiting.clear();
  state.busy = false;  // the outputs that come next need not wait for those that go
  state.lastUpdate.reset();
  const std::string_view name = FindOutputType(static_cast<std::int32_t>(type))->name;
  int index = 0;
  for (const OutputPtr& output : outputs) {
    DebugLine("Clearing ", name, " Output ", ++index);
    Guarded("stopping an output", [&] { output->StopOutput(); });
  }
}

// ---- Special elements

std::string clsZEBService::GetSpecialElementByName(std::string_view name) const {
  constexpr std::size_t kNowAndSeparator = 4;  // characters
  const std::string upper = UpperCase(name);
  if (upper == "PRESENTERFULLNAME") return PresenterFullName;
  if (upper == "PRESENTERREFERENCE") return PresenterReference;
  if (upper == "SHOWREFERENCE") return ShowReference;
  if (upper == "SHOWTITLE") return ShowTitle;
  if (upper == "SERVICENAME") return settings.ServiceName;
  if (upper == "NOPICTUREFILENAME") return settings.NoPictureFileName;
  if (upper == "CURRENTDATETIME") return GeneralDate(environment_.loop.Now());
  if (upper == "CURRENTDATETIMEXML") return XmlDateTime(environment_.loop.Now());
  if (upper.compare(0, 3, "NOW") == 0)  // the pattern as written, so that its literal letters keep their case
    return FormatDateTime(environment_.loop.Now(), name.substr(SkipCharacters(name, 0, kNowAndSeparator)));
  return std::string("Unknown tag ").append(name);
}

}  // namespace zeb
