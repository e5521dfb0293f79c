// The part of clsZEBService that loads and saves its settings and outputs.
#include <algorithm>
#include <array>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "core/ProgramSettings.h"
#include "core/SettingFields.h"
#include "core/SettingsTree.h"
#include "core/clsZEBService.h"
#include "diagnostics/hxGeneral.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

using S = ServiceSettings;
using Row = SettingRow<ServiceSettings>;
constexpr std::string_view kSourceTypes =
    "0|11|12|51";  // the control link, and the files of sources/ZEB_FN.h
constexpr std::int32_t kMostControlPort = 65535 - 6900;  // counted from 6900 on
constexpr SettingEntry kCartLineEntry{.least = 0, .most = 3};
constexpr auto kRows = std::to_array<Row>({
    {"ServiceName", &S::ServiceName},
    {"NoPictureFileName", &S::NoPictureFileName},
    {"LoggingPath", &S::LoggingPath},
    {"TravelFlagActivateString", &S::TravelFlagActivateString},
    {.name = "TravelFlagDeactivateTimeout",
     .member = &S::TravelFlagDeactivateTimeout,
     .storedAs = StoredAs::kNumber,
     .entry = kCountEntry},
    {"InstantUpdate", &S::InstantUpdate, StoredAs::kNumber},
    {.name = "UpdateDisplayInterval", .member = &S::UpdateDisplayInterval, .entry = kCountEntry},
    {"UpdateOnTimingChange", &S::UpdateOnTimingChange},
    {"ProcessPresenterUpdates", &S::ProcessPresenterUpdates, StoredAs::kNumber},
    {"ProcessShowUpdates", &S::ProcessShowUpdates, StoredAs::kNumber},
    {.name = "NumberUpdatesOnServer", .member = &S::NumberUpdatesOnServer, .entry = kCountEntry},
    {.name = "LastUpdateOnServerIndex", .member = &S::LastUpdateOnServerIndex, .entry = kCountEntry},
    {.name = "InfoSourceType",
     .member = &S::InfoSourceType,
     .storedAs = StoredAs::kNumber,
     .entry = {.words = kSourceTypes}},
    {.name = "TolvanTCPControlPort",
     .member = &S::TolvanTCPControlPort,
     .storedAs = StoredAs::kNumber,
     .entry = {.least = 0, .most = kMostControlPort}},
    {"InfoSourceFileName", &S::InfoSourceFileName},
    {.name = "CartItemNameLine", .member = &S::CartItemNameLine, .entry = kCartLineEntry},
    {.name = "CartArtist1Line", .member = &S::CartArtist1Line, .entry = kCartLineEntry},
    {.name = "CartArtist2Line", .member = &S::CartArtist2Line, .entry = kCartLineEntry},
    {"UseBounce", &S::UseBounce, StoredAs::kNumber},
    {"BounceServer", &S::BounceServer},
    {.name = "BouncePort",
     .member = &S::BouncePort,
     .storedAs = StoredAs::kNumber,
     .entry = {.least = 0, .most = kMostControlPort}},
    {.name = "TravelFlagActive",
     .member = &S::TravelFlagActive,
     .storedAs = StoredAs::kNumber,
     .entry = {.offered = false}},
});
constexpr SettingTable<ServiceSettings> kTable{kRows};

constexpr const char* kUpdateInterval = "UpdateInterval";
constexpr const char* kDelaySeconds = "DelaySeconds";  // of every output
constexpr std::int32_t kLongestDelay = 3600;

// Beside the output's own.
struct CommonSettings {
  std::int32_t delay = 0;
};
constexpr SettingRow<CommonSettings> kCommonRows[] = {
    {.name = kDelaySeconds,
     .member = &CommonSettings::delay,
     .storedAs = StoredAs::kNumber,
     .least = 0,
     .most = kLongestDelay},
};
constexpr SettingTable<CommonSettings> kCommonTable = kCommonRows;

const OutputTypeInfo* FindTypeOfKey(std::string_view settingsKey) {
  for (const OutputTypeInfo& info : kOutputTypes)
    if (EqualIgnoringAsciiCase(info.settingsKey, settingsKey)) return &info;
  return nullptr;
}

std::string TypeKey(const std::string& serviceKey, const OutputTypeInfo& info) {
  return serviceKey + "\\" + std::string(info.settingsKey);
}

}  // namespace

void TakeChanges(const ServiceSettings& before, const ServiceSettings& after, ServiceSettings& to) {
  TakeChanges(kTable, before, after, to);
}

SettingTable<ServiceSettings> ServiceSettingTable() {
  return kTable;
}

SettingList ServiceSettingList() {
  return ListOf(kTable);
}

SettingList CommonOutputSettings() {
  return ListOf(kCommonTable);
}

// ---- Loading

// A service as it is stored.
struct clsZEBService::Stored {
  struct Type {
    const OutputTypeInfo* info = nullptr;
    std::vector<OutputPtr> outputs;
    std::int32_t interval = 0;
  };
  ServiceSettings settings;
  std::int32_t retrySeconds = ProgramSettings().RetrySeconds;  // for all services
  std::vector<Type> types;
};

namespace {

std::string OutputsOf(const OutputTypeInfo& info, int serviceNumber) {
  return std::string(info.name) + " outputs of service " + std::to_string(serviceNumber);
}

}  // namespace

void clsZEBService::SetServiceNumber(int number) {
  if (DebugLevelAllows(5))
    WriteDebugLine("Started ZEBService.ServiceNumber=" + std::to_string(number), 5, LineKind::kStarted);
  if (TotalNumberOutputs() > 0) ClearService();
  serviceNumber_ = number;
  if (number > 0) {
    Stored stored = ReadStored(Unreadable::kDefault);
    settings = std::move(stored.settings);
    cycle_.SetRetrySeconds(stored.retrySeconds);
    for (Stored::Type& type : stored.types) {
      for (OutputPtr& output : type.outputs) AddOutput(type.info->type, std::move(output));
      cycle_.SetInterval(type.info->type, type.interval);
    }
    Guarded("opening the service", [this] { events_.ServiceOpened(); });
  } else {
    WriteDebugLine("Exit as no ServiceNumber");
  }
  WriteDebugLine("Finished ZEBService.ServiceNumber", 5, LineKind::kFinished);
}

Result<clsZEBService::Changes> clsZEBService::ReadAgain() {
  Stored stored;
  try {
    environment_.hive.ReadTransaction([&] { stored = ReadStored(Unreadable::kThrow); });
  } catch (const std::exception& error) {
    return Failure{error.what()};
  }
  Changes changes;
  // Where the updates have got to is not written to the store each time.
  stored.settings.LastUpdateOnServerIndex =
      std::min(settings.LastUpdateOnServerIndex, stored.settings.NumberUpdatesOnServer);
  stored.settings.TravelFlagActive = settings.TravelFlagActive;
  changes.any = SettingsText(kTable, settings) != SettingsText(kTable, stored.settings);
  settings = std::move(stored.settings);
  cycle_.SetRetrySeconds(stored.retrySeconds);
  for (Stored::Type& type : stored.types) {
    changes.any = changes.any || cycle_.Interval(type.info->type) != type.interval;
    cycle_.SetInterval(type.info->type, type.interval);
    TakeOver(type.info->type, std::move(type.outputs), changes);
  }
  return changes;
}

// Replaces the running outputs by those that are stored now, except for the ones whose settings are as
// before, wherever in the list they stand now.
void clsZEBService::TakeOver(OutputType type, std::vector<OutputPtr> stored, Changes& changes) {
  const auto isAs = [](const OutputPtr& output) {
    return [&output](const RunnerPtr& runner) {
      return runner && runner->output->DelaySeconds == output->DelaySeconds &&
             runner->output->SettingsText() == output->SettingsText();
    };
  };
  std::vector<RunnerPtr> former = cycle_.Runners(type), runners;
  for (OutputPtr& output : stored) {
    const auto same = std::find_if(former.begin(), former.end(), isAs(output));
    if (same != former.end()) {
      runners.push_back(std::exchange(*same, nullptr));
      runners.back()->output->NoteNumber(serviceNumber_, static_cast<int>(runners.size()));
    } else {
      runners.push_back(cycle_.MakeRunner(type, std::move(output)));
      changes.added.push_back({type, static_cast<int>(runners.size())});
    }
  }
  cycle_.SetRunners(type, std::move(runners));
  for (const RunnerPtr& gone : former)
    if (gone) Guarded("stopping an output", [&] { gone->output->StopOutput(); });
  changes.any =
      changes.any || !changes.added.empty() ||
      std::any_of(former.begin(), former.end(), [](const RunnerPtr& runner) { return runner != nullptr; });
}

void clsZEBService::Try(Unreadable unreadable, const std::string& what, const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception&) {
    if (unreadable == Unreadable::kThrow) throw;
    ReportException(what, Report::kQuietly);
  }
}

clsZEBService::Stored clsZEBService::ReadStored(Unreadable unreadable) const {
  SettingsHive& hive = environment_.hive;
  const std::string key = environment_.ServiceKey(serviceNumber_);
  Stored stored;
  for (const Row& row : kRows)
    Try(unreadable, "reading the setting " + std::string(row.name),
        [&] { ReadSetting(hive, key, "", row, stored.settings); });
  // Kept when the store has no value.
  Try(unreadable, "reading the control port", [&] {
    stored.settings.TolvanTCPControlPort =
        hive.ReadNumber(key, "TolvanTCPControlPort", settings.TolvanTCPControlPort);
  });
  Try(unreadable, "reading RetrySeconds", [&] {
    stored.retrySeconds = hive.ReadNumber(environment_.settingsRoot, "RetrySeconds", stored.retrySeconds);
  });
  for (const OutputTypeInfo& info : kOutputTypes) {
    const std::string typeKey = TypeKey(key, info);
    Stored::Type& type = stored.types.emplace_back();
    type.info = &info;
    int count = 0;
    Try(unreadable, "reading the number of " + OutputsOf(info, serviceNumber_),
        [&] { count = StoredOutputCount(info, typeKey); });
    for (int i = 1; i <= count; ++i) {
      OutputPtr output;
      Try(unreadable, "making the " + OutputsOf(info, serviceNumber_),
          [&] { output = makeOutput_(info.type); });
      if (output == nullptr) {
        environment_.person.Note("This program has no " + std::string(info.name) + " outputs: the " +
                                 OutputsOf(info, serviceNumber_) +
                                 " are kept in the settings, and do not run");
        break;
      }
      // An output whose settings cannot be read is there all the same, so that the others keep their numbers.
      Try(unreadable, "reading the " + OutputsOf(info, serviceNumber_),
          [&] { ReadOutput(info, i, *output); });
      type.outputs.push_back(std::move(output));
    }
    Try(unreadable, "reading the update interval of the " + OutputsOf(info, serviceNumber_),
        [&] { type.interval = LeadingInteger(hive.ReadText(typeKey, kUpdateInterval, "0")); });
  }
  return stored;
}

void clsZEBService::ReadOutput(const OutputTypeInfo& info, int index, clsZEBTemplate& output) const {
  output.GetOutputInformation(serviceNumber_, index);
  const std::int32_t delay =
      environment_.hive.ReadNumber(TypeKey(StoredKey(), info), kDelaySeconds + std::to_string(index), 0);
  output.DelaySeconds = std::clamp(delay, 0, kLongestDelay);
}

OutputPtr clsZEBService::MakeDraft(OutputType type, int index) const {
  OutputPtr draft = makeOutput_(type);
  // What may be left in the store behind the last output is not a new one's.
  const int place = Output(type, index) ? index : kMaxOutputsOfType + 1;
  if (draft) ReadOutput(*FindOutputType(static_cast<std::int32_t>(type)), place, *draft);
  return draft;
}

int clsZEBService::StoredOutputCount(const OutputTypeInfo& info, const std::string& typeKey) const {
  const std::int32_t count = LeadingInteger(environment_.hive.ReadText(typeKey, "NumberOutputs", "0"));
  if (count <= kMaxOutputsOfType) return count;
  environment_.person.Note("The settings hold " + std::to_string(count) + " " +
                           OutputsOf(info, serviceNumber_) + "; only the first " +
                           std::to_string(kMaxOutputsOfType) + " are loaded");
  return kMaxOutputsOfType;
}

// ---- Storing

bool clsZEBService::StoreServiceInformation() {
  const Trace trace("ZEBService.StoreServiceInformation");
  if (serviceNumber_ <= 0) {
    trace.ExitAs("no ServiceNumber");
    return false;
  }
  try {
    environment_.hive.Transaction([this] { WriteStored(); });
    return true;
  } catch (...) {
    ReportException("saving the settings of service " + std::to_string(serviceNumber_), Report::kShown);
    return false;
  }
}

void clsZEBService::WriteStored() {
  WriteAll(StoredKey());
}

void clsZEBService::WriteStored(const ServiceSettings& wanted) {
  WriteSettings(environment_.hive, StoredKey(), "", kTable, wanted);
}

void clsZEBService::WriteStored(OutputType type, int index, clsZEBTemplate& wanted) {
  WriteOutput(TypeKey(StoredKey(), *FindOutputType(static_cast<std::int32_t>(type))), index, wanted);
}

void clsZEBService::WriteStoredInterval(OutputType type, std::int32_t seconds) {
  environment_.hive.WriteText(TypeKey(StoredKey(), *FindOutputType(static_cast<std::int32_t>(type))),
                              kUpdateInterval, std::to_string(seconds));
}

// Into a place without values.
void clsZEBService::WriteOutput(const std::string& typeKey, int index, clsZEBTemplate& output) const {
  output.StoreOutputInformation(serviceNumber_, index);
  if (output.DelaySeconds != 0)
    environment_.hive.WriteNumber(typeKey, kDelaySeconds + std::to_string(index), output.DelaySeconds);
}

bool clsZEBService::MoveToServiceNumber(int number) {
  const Trace trace("ZEBService.MoveToServiceNumber");
  if (number <= 0) {
    trace.ExitAs("no ServiceNumber");
    return false;
  }
  const int oldNumber = serviceNumber_;
  serviceNumber_ = number;
  if (oldNumber <= 0 || oldNumber == number) return StoreServiceInformation();
  try {
    const std::string oldKey = environment_.ServiceKey(oldNumber);
    const std::string newKey = environment_.ServiceKey(number);
    SettingsHive& hive = environment_.hive;
    hive.Transaction([&] {
      hive.DeleteKey(newKey);
      // Carries along what this program does not know; WriteAll replaces the rest.
      WriteSettingsTree(hive, newKey, ReadSettingsTree(hive, oldKey));
      hive.DeleteKey(oldKey);
      WriteAll(newKey);
    });
    return true;
  } catch (...) {
    serviceNumber_ = oldNumber;
    ReportException("storing service " + std::to_string(oldNumber) + " as service " + std::to_string(number),
                    Report::kShown);
    return false;
  }
}

// Called inside a transaction. Starts from an empty key, so that nothing of an output that is gone survives,
// and puts back the subkeys that are not this program's to rewrite: those of types that are not built, and
// unknown ones.
void clsZEBService::WriteAll(const std::string& key) {
  SettingsHive& hive = environment_.hive;
  const std::string below = key + "\\";
  std::vector<std::pair<std::string, SettingsTree>> kept;
  for (const std::string& name : hive.SubKeys(key)) {
    const OutputTypeInfo* info = FindTypeOfKey(name);
    if (info == nullptr ||
        (OutputCount(static_cast<std::int32_t>(info->type)) == 0 && makeOutput_(info->type) == nullptr))
      kept.emplace_back(below + name, ReadSettingsTree(hive, below + name));
  }
  hive.DeleteKey(key);
  for (const auto& [keptKey, tree] : kept) WriteSettingsTree(hive, keptKey, tree);

  WriteSettings(hive, key, "", kTable, settings);
  for (const OutputTypeInfo& info : kOutputTypes) {
    const std::string typeKey = TypeKey(key, info);
    if (hive.KeyExists(typeKey)) continue;  // kept
    const auto& runners = cycle_.Runners(info.type);
    hive.WriteText(typeKey, "NumberOutputs", std::to_string(runners.size()));
    for (int i = 1; i <= std::ssize(runners); ++i)
      WriteOutput(typeKey, i, *runners[static_cast<std::size_t>(i) - 1]->output);
    hive.WriteText(typeKey, kUpdateInterval, std::to_string(cycle_.Interval(info.type)));
  }
}

}  // namespace zeb
