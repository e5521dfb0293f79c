// The part of clsZEBService that loads and saves its settings and outputs.
#include <array>
#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "core/SettingsTree.h"
#include "core/clsZEBService.h"
#include "diagnostics/hxGeneral.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

// More outputs of a type than any station has; a damaged count must not make the program build millions.
constexpr std::int32_t kMaxOutputsOfType = 1000;

using Member =
    std::variant<std::string ServiceSettings::*, std::int32_t ServiceSettings::*, bool ServiceSettings::*>;

// Whether a number is stored as a number or as its decimal text. The two kinds grew over the years, and other
// programs of the station read the values, so each keeps its own.
enum class StoredAs { kText, kNumber };

struct SettingLine {
  std::string_view name;
  Member member;
  StoredAs storedAs;
};

using S = ServiceSettings;
constexpr std::array<SettingLine, 21> kSettingLines = {{
    {"ServiceName", &S::ServiceName, StoredAs::kText},
    {"NoPictureFileName", &S::NoPictureFileName, StoredAs::kText},
    {"LoggingPath", &S::LoggingPath, StoredAs::kText},
    {"TravelFlagActivateString", &S::TravelFlagActivateString, StoredAs::kText},
    {"TravelFlagDeactivateTimeout", &S::TravelFlagDeactivateTimeout, StoredAs::kNumber},
    {"InstantUpdate", &S::InstantUpdate, StoredAs::kNumber},
    {"UpdateDisplayInterval", &S::UpdateDisplayInterval, StoredAs::kText},
    {"UpdateOnTimingChange", &S::UpdateOnTimingChange, StoredAs::kText},
    {"ProcessPresenterUpdates", &S::ProcessPresenterUpdates, StoredAs::kNumber},
    {"ProcessShowUpdates", &S::ProcessShowUpdates, StoredAs::kNumber},
    {"NumberUpdatesOnServer", &S::NumberUpdatesOnServer, StoredAs::kText},
    {"LastUpdateOnServerIndex", &S::LastUpdateOnServerIndex, StoredAs::kText},
    {"InfoSourceType", &S::InfoSourceType, StoredAs::kNumber},
    {"TolvanTCPControlPort", &S::TolvanTCPControlPort, StoredAs::kNumber},
    {"InfoSourceFileName", &S::InfoSourceFileName, StoredAs::kText},
    {"CartItemNameLine", &S::CartItemNameLine, StoredAs::kText},
    {"CartArtist1Line", &S::CartArtist1Line, StoredAs::kText},
    {"CartArtist2Line", &S::CartArtist2Line, StoredAs::kText},
    {"UseBounce", &S::UseBounce, StoredAs::kNumber},
    {"BounceServer", &S::BounceServer, StoredAs::kText},
    {"BouncePort", &S::BouncePort, StoredAs::kNumber},
}};

// Hands the hive's value to the member; the member's present value is the default.
struct Reader {
  SettingsHive& hive;
  const std::string& key;
  std::string name;
  ServiceSettings& settings;

  void operator()(std::string S::*member) const {
    settings.*member = hive.ReadText(key, name, settings.*member);
  }
  void operator()(std::int32_t S::*member) const {
    settings.*member = hive.ReadNumber(key, name, settings.*member);
  }
  void operator()(bool S::*member) const {
    // As text, since some tools write the word.
    const std::string text = hive.ReadText(key, name, settings.*member ? "1" : "0");
    settings.*member = LeadingInteger(text) != 0 || EqualIgnoringAsciiCase(TrimBlanks(text), "true");
  }
};

struct Writer {
  SettingsHive& hive;
  const std::string& key;
  std::string name;
  StoredAs storedAs;
  const ServiceSettings& settings;

  void operator()(std::string S::*member) const { hive.WriteText(key, name, settings.*member); }
  void operator()(std::int32_t S::*member) const { WriteNumber(settings.*member); }
  void operator()(bool S::*member) const { WriteNumber(settings.*member ? 1 : 0); }
  void WriteNumber(std::int32_t number) const {
    if (storedAs == StoredAs::kNumber)
      hive.WriteNumber(key, name, number);
    else
      hive.WriteText(key, name, PlainNumber(std::int64_t{number}));
  }
};

const OutputTypeInfo* FindTypeOfKey(std::string_view settingsKey) {
  for (const OutputTypeInfo& info : kOutputTypes)
    if (EqualIgnoringAsciiCase(info.settingsKey, settingsKey)) return &info;
  return nullptr;
}

std::string TypeKey(const std::string& serviceKey, const OutputTypeInfo& info) {
  return serviceKey + "\\" + std::string(info.settingsKey);
}

}  // namespace

void clsZEBService::SetServiceNumber(int number) {
  if (DebugLevelAllows(5))
    WriteDebugLine("Started ZEBService.ServiceNumber=" + std::to_string(number), 5, LineKind::kStarted);
  if (TotalNumberOutputs() > 0) ClearService();
  serviceNumber_ = number;
  if (number > 0) {
    const std::string key = environment_.ServiceKey(number);
    LoadSettings(key);
    LoadOutputs(key);
    Guarded("opening the service", [this] { events_.ServiceOpened(); });
  } else {
    WriteDebugLine("Exit as no ServiceNumber");
  }
  WriteDebugLine("Finished ZEBService.ServiceNumber", 5, LineKind::kFinished);
}

void clsZEBService::LoadSettings(const std::string& key) {
  const std::int32_t heldPort = settings.TolvanTCPControlPort;
  settings = ServiceSettings();
  settings.TolvanTCPControlPort = heldPort;
  for (const SettingLine& line : kSettingLines)
    Guarded("reading the setting " + std::string(line.name), [&] {
      std::visit(Reader{environment_.hive, key, std::string(line.name), settings}, line.member);
    });
}

void clsZEBService::LoadOutputs(const std::string& key) {
  SettingsHive& hive = environment_.hive;
  for (const OutputTypeInfo& info : kOutputTypes) {
    const std::string typeKey = TypeKey(key, info);
    const std::string what = std::string(info.name) + " outputs of service " + std::to_string(serviceNumber_);
    std::int32_t count = 0;
    Guarded("reading the number of " + what,
            [&] { count = LeadingInteger(hive.ReadText(typeKey, "NumberOutputs", "0")); });
    if (count > kMaxOutputsOfType) {
      environment_.person.Note("The settings hold " + std::to_string(count) + " " + what +
                               "; only the first " + std::to_string(kMaxOutputsOfType) + " are loaded");
      count = kMaxOutputsOfType;
    }
    for (int i = 1; i <= count; ++i) {
      OutputPtr output;
      Guarded("making the " + what, [&] { output = makeOutput_(info.type); });
      if (output == nullptr) {
        environment_.person.Note("This program has no " + std::string(info.name) + " outputs: the " + what +
                                 " are kept in the settings, and do not run");
        break;
      }
      // An output whose settings cannot be read is added all the same, so that the others keep their numbers.
      Guarded("reading the " + what, [&] { output->GetOutputInformation(serviceNumber_, i); });
      AddOutput(info.type, std::move(output));
    }
    Guarded("reading the update interval of the " + what, [&] {
      const std::string interval = hive.ReadText(typeKey, "UpdateInterval", "0");
      SetOutputUpdateInterval(static_cast<std::int32_t>(info.type), LeadingInteger(interval));
    });
  }
}

bool clsZEBService::StoreServiceInformation() {
  const Trace trace("ZEBService.StoreServiceInformation");
  if (serviceNumber_ <= 0) {
    trace.ExitAs("no ServiceNumber");
    return false;
  }
  try {
    environment_.hive.Transaction([this] { WriteAll(environment_.ServiceKey(serviceNumber_)); });
    return true;
  } catch (...) {
    ReportException("saving the settings of service " + std::to_string(serviceNumber_), false);
    return false;
  }
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
                    false);
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
    if (info == nullptr || (StateOf(info->type).outputs.empty() && makeOutput_(info->type) == nullptr))
      kept.emplace_back(below + name, ReadSettingsTree(hive, below + name));
  }
  hive.DeleteKey(key);
  for (const auto& [keptKey, tree] : kept) WriteSettingsTree(hive, keptKey, tree);

  for (const SettingLine& line : kSettingLines)
    std::visit(Writer{hive, key, std::string(line.name), line.storedAs, settings}, line.member);
  for (const OutputTypeInfo& info : kOutputTypes) {
    const std::string typeKey = TypeKey(key, info);
    if (hive.KeyExists(typeKey)) continue;  // kept
    const TypeState& state = StateOf(info.type);
    hive.WriteText(typeKey, "NumberOutputs", std::to_string(state.outputs.size()));
    for (std::size_t i = 0; i < state.outputs.size(); ++i)
      state.outputs[i]->StoreOutputInformation(serviceNumber_, static_cast<int>(i) + 1);
    hive.WriteText(typeKey, "UpdateInterval", std::to_string(state.interval));
  }
}

}  // namespace zeb
