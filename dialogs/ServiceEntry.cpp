#include "dialogs/ServiceEntry.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "core/EnteredSettings.h"
#include "core/clsZEBService.h"
#include "outputs/OutputTable.h"
#include "outputs/file/clsFileParameters.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr std::string_view kServiceName = "ServiceName";
constexpr std::string_view kControlPort = "TolvanTCPControlPort";

const SettingInfo* Find(const SettingList& list, std::string_view name) {
  const auto found = std::find_if(list.begin(), list.end(), [name](const SettingInfo& info) {
    return EqualIgnoringAsciiCase(info.name, name);
  });
  return found == list.end() ? nullptr : &*found;
}

// The pair's number that stands behind a name, and the name; 0 without one.
int PairOf(std::string_view& name) {
  const std::size_t last = name.find_last_not_of("0123456789");
  if (last == std::string_view::npos || last + 1 == name.size() || name[last + 1] == '0') return 0;
  const auto number = WholeNumber<int>(name.substr(last + 1));
  if (!number) return 0;
  name = name.substr(0, last + 1);
  return *number;
}

}  // namespace

Outcome CheckServiceName(const std::string& name) {
  if (TrimBlanks(name).empty()) return Failure{"a service needs a name"};
  if (std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }))
    return Failure{"a service's name is one line without control characters"};
  return {};
}

// One that may be stored.
struct ServiceEntry::Value {
  CheckedSetting setting;
  int pair = 0;  // 0: of the output itself, or of a service

  std::string Name() const { return std::string(setting.info.name) + (pair > 0 ? std::to_string(pair) : ""); }
};

Result<EnteredSetting> SplitEntered(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0)
    return Failure{"a setting is given as name=value, not '" + text + "'"};
  return EnteredSetting{text.substr(0, equals), text.substr(equals + 1)};
}

ServiceEntry::ServiceEntry(SettingsHive& hive, FileSystem& files, std::string dataFolder,
                           std::string settingsRoot)
    : hive_(hive),
      files_(files),
      dataFolder_(std::move(dataFolder)),
      stored_(hive, std::move(settingsRoot)) {}

template <class Given>
Given ServiceEntry::Together(const std::function<Given()>& work) {
  std::optional<Given> given;
  hive_.Transaction([&] { given.emplace(work()); });
  return std::move(*given);
}

// ---- Checking

Outcome ServiceEntry::CheckFile(const Value& value) const {
  const CheckedSetting& setting = value.setting;
  if (setting.info.entry.is != SettingIs::kNeededFile || setting.text.empty()) return {};
  const std::string path = JoinPath(dataFolder_, setting.text);
  const std::optional<FileInfo> info = files_.Stat(path);
  if (!info) return Failure{value.Name() + ": there is no file '" + path + "', or it cannot be reached"};
  if (!info->isRegular) return Failure{value.Name() + ": '" + path + "' is no file"};
  const Result<std::unique_ptr<FileReader>> opened = files_.OpenForReading(path);
  return opened ? Outcome() : Outcome(Failure{value.Name() + ": " + opened.Reason()});
}

Result<std::vector<ServiceEntry::Value>> ServiceEntry::CheckService(const std::string& name,
                                                                    const Settings& settings) const {
  if (const Outcome right = CheckServiceName(name); !right) return right.AsFailure();
  const SettingList list = ServiceSettingList();
  std::vector<Value> values;
  std::set<std::string_view> given = {kServiceName};
  values.push_back({{*Find(list, kServiceName), name}, 0});
  for (const EnteredSetting& entered : settings) {
    Result<CheckedSetting> checked = CheckSetting(list, "a service", entered.name, entered.value);
    if (!checked) return checked.AsFailure();
    if (!given.insert(checked.Value().info.name).second)
      return Failure{std::string(checked.Value().info.name) + " is given twice"};
    values.push_back({std::move(checked.Value()), 0});
    if (const Outcome there = CheckFile(values.back()); !there) return there.AsFailure();
  }
  return values;
}

namespace {

// Pairs are numbered without a gap, and each has both of its files.
Outcome CheckPairs(const std::set<std::string>& given, int pairs) {
  for (int pair = 1; pair <= pairs; ++pair)
    for (const char* name : {"SourceFileName", "DestinationFileName"})
      if (!given.contains(name + std::to_string(pair)))
        return Failure{"pair " + std::to_string(pair) + " has no " + name + std::to_string(pair)};
  return {};
}

}  // namespace

Result<std::vector<ServiceEntry::Value>> ServiceEntry::CheckOutput(OutputType type,
                                                                   const Settings& settings) const {
  const OutputSettings there = SettingsOf(type);
  const std::string of = "the " + std::string(NameOf(type)) + " output";
  SettingList all = there.own;
  all.insert(all.end(), there.ofPair.begin(), there.ofPair.end());
  std::vector<Value> values;
  std::set<std::string> given;
  int pairs = 0;
  for (const EnteredSetting& entered : settings) {
    std::string_view name = entered.name;
    const int pair = Find(there.own, name) == nullptr && !there.ofPair.empty() ? PairOf(name) : 0;
    if (pair > kMaxPairs)
      return Failure{"an output has " + std::to_string(kMaxPairs) + " pairs at the most, so there is no " +
                     entered.name};
    Result<CheckedSetting> checked = CheckSetting(pair > 0 ? there.ofPair : all, of, name, entered.value);
    if (!checked) return checked.AsFailure();
    Value value{std::move(checked.Value()), pair};
    if (pair == 0 && Find(there.ofPair, value.setting.info.name))
      return Failure{value.Name() + " is of one pair: write " + value.Name() + "1 for the first"};
    if (!given.insert(value.Name()).second) return Failure{value.Name() + " is given twice"};
    if (const Outcome isThere = CheckFile(value); !isThere) return isThere.AsFailure();
    pairs = std::max(pairs, pair);
    values.push_back(std::move(value));
  }
  if (!there.ofPair.empty()) pairs = std::max(pairs, 1);  // without one it would do nothing
  if (const Outcome whole = CheckPairs(given, pairs); !whole) return whole.AsFailure();
  return values;
}

Outcome ServiceEntry::CheckControlPort(const std::vector<Value>& values) const {
  const auto found = std::find_if(values.begin(), values.end(),
                                  [](const Value& value) { return value.setting.info.name == kControlPort; });
  return stored_.CheckControlPort(found == values.end() ? 0 : LeadingInteger(found->setting.text));
}

// ---- Storing

Result<int> ServiceEntry::AddService(const std::string& name, const Settings& settings) {
  const Result<std::vector<Value>> values = CheckService(name, settings);
  if (!values) return values.AsFailure();
  return Together<Result<int>>([&]() -> Result<int> {
    if (const Outcome isFree = CheckControlPort(values.Value()); !isFree) return isFree.AsFailure();
    Result<int> number = stored_.Add();
    if (!number) return number;
    for (const Value& value : values.Value())
      WriteSetting(hive_, stored_.Key(number.Value()), value.Name(), value.setting);
    return number;
  });
}

Outcome ServiceEntry::RenameService(int service, const std::string& name) {
  if (Outcome right = CheckServiceName(name); !right) return right;
  return Together<Outcome>([&]() -> Outcome {
    if (Outcome there = stored_.Check(service); !there) return there;
    hive_.WriteText(stored_.Key(service), std::string(kServiceName), name);
    return {};
  });
}

Outcome ServiceEntry::RemoveService(int service) {
  return Together<Outcome>([&] { return stored_.Remove(service); });
}

Result<OutputName> ServiceEntry::AddOutput(int service, OutputType type, const Settings& settings) {
  const Result<std::vector<Value>> values = CheckOutput(type, settings);
  if (!values) return values.AsFailure();
  return Together<Result<OutputName>>([&]() -> Result<OutputName> {
    Result<OutputName> output = stored_.AddOutput(service, type);
    if (!output) return output;
    const int number = output.Value().number;
    const std::string key = stored_.KeyOf(service, type), pairStart = PairNamesStart(number);
    int pairs = 0;
    for (const Value& value : values.Value()) {
      pairs = std::max(pairs, value.pair);
      WriteSetting(hive_, key,
                   value.pair > 0 ? pairStart + value.Name() : value.Name() + std::to_string(number),
                   value.setting);
    }
    if (pairs > 0) hive_.WriteText(key, pairStart + kPairCountName, std::to_string(pairs));
    return output;
  });
}

Outcome ServiceEntry::RemoveOutput(int service, const OutputName& output) {
  return Together<Outcome>([&] { return stored_.RemoveOutput(service, output); });
}

}  // namespace zeb
