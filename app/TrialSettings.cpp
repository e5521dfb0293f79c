#include "app/TrialSettings.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "core/SettingsTree.h"
#include "core/clsZEBService.h"
#include "outputs/OutputTable.h"
#include "platform/FileSystem.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Paths.h"
#include "text/ValueEscapes.h"

namespace zeb {

namespace {

constexpr std::string_view kPairs = "Output1.";
constexpr std::string_view kNumberFiles = "Output1.NumberFiles";
constexpr int kMostPairs = 1000;
// Read for every output by its service.
constexpr std::string_view kDelaySeconds = "DelaySeconds";
constexpr std::uint32_t kLongestDelay = 3600;

std::string TextOf(const SettingsValue& value) {
  if (const auto* text = std::get_if<std::string>(&value.data)) return *text;
  return PlainNumber(std::int64_t{static_cast<std::int32_t>(std::get<std::uint32_t>(value.data))});
}

const SettingsValue* Find(const std::vector<SettingsValue>& values, std::string_view name) {
  for (const SettingsValue& value : values)
    if (EqualIgnoringAsciiCase(value.name, name)) return &value;
  return nullptr;
}

std::string Given(const std::pair<std::string, std::string>& pair) {
  return "'" + pair.first + "=" + pair.second + "'";
}

// As the thing itself stores it: a number or a text.
Result<SettingsValue> ValueFor(const SettingsValue& like, const std::string& name,
                               const std::pair<std::string, std::string>& given) {
  if (like.data.index() == 0) return SettingsValue{name, given.second};
  const auto number = WholeNumber<std::int32_t>(given.second);
  if (!number) return Failure{Given(given) + " is not possible: it takes a whole number"};
  return SettingsValue{name, static_cast<std::uint32_t>(*number)};
}

// What a station can mean by a number: no setting takes one below 0, and ports end at 65535.
Outcome CheckRange(const SettingsValue& like, const std::string& stem,
                   const std::pair<std::string, std::string>& given) {
  const auto number = WholeNumber<std::int64_t>(given.second);
  if (!number || !WholeNumber<std::int32_t>(TextOf(like))) return {};
  if (*number < 0) return Failure{Given(given) + " is not possible: it takes no number below 0"};
  if (stem.ends_with("Port") && *number > 65535)
    return Failure{Given(given) + " is not possible: ports end at 65535"};
  return {};
}

// What was read is written as it was given, or the thing has taken it for something else.
Outcome CompareTaken(const std::vector<SettingsValue>& taken, const std::string& name,
                     const std::pair<std::string, std::string>& given) {
  const SettingsValue* value = Find(taken, name);
  if (!value || TextOf(*value) == given.second) return {};
  return Failure{Given(given) + " is not possible; it would be taken for '" + TextOf(*value) + "'"};
}

std::string Joined(const std::set<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : ", ") + name;
  return joined;
}

// "SourceFileName12": the name, and the pair's number; 0 when there is none.
std::pair<std::string_view, int> CutNumber(std::string_view name) {
  const std::size_t end = name.find_last_not_of("0123456789") + 1;
  return {name.substr(0, end), WholeNumber<int>(name.substr(end)).value_or(0)};
}

// One output in the scratch store, as number 1 of service 1.
struct Trial {
  Environment& environment;
  SettingsHive& hive;
  const OutputTypeInfo& info;
  OutputFactory make = MakeOutputFactory(environment);
  std::string key = environment.ServiceKey(1) + "\\" + std::string(info.settingsKey);

  // What an output writes after it has read the key; the key is empty then.
  std::vector<SettingsValue> Taken() {
    const OutputPtr output = make(info.type);
    output->GetOutputInformation(1, 1);
    hive.DeleteKey(key);
    output->StoreOutputInformation(1, 1);
    std::vector<SettingsValue> values = hive.Values(key);
    hive.DeleteKey(key);
    return values;
  }
  void Write(const SettingsValue& value) { WriteSettingsValue(hive, key, value); }
};

// The names in which an output's settings are given.
struct Names {
  std::vector<SettingsValue> all;  // as number 1, with one pair
  bool hasPairs = false;

  explicit Names(Trial& trial) {
    hasPairs = Find(trial.Taken(), kNumberFiles) != nullptr;
    if (hasPairs) trial.hive.WriteText(trial.key, std::string(kNumberFiles), "1");
    all = trial.Taken();
    all.push_back({std::string(kDelaySeconds) + "1", std::uint32_t{0}});
  }
  // The setting as it stands for output and pair number 1; null: there is none. `pair` is 0 for no pair's.
  const SettingsValue* Of(const std::string& name, int& pair) const {
    pair = 0;
    if (const SettingsValue* value = Find(all, name + "1"); value && name.find('.') == std::string::npos)
      return value;
    const auto [stem, number] = CutNumber(name);
    if (!hasPairs || number < 1) return nullptr;
    pair = number;
    return Find(all, std::string(kPairs) + std::string(stem) + "1");
  }
  std::string Possible() const {
    std::set<std::string> names;
    for (const SettingsValue& value : all) {
      if (value.name == kNumberFiles) continue;
      const bool ofPair = value.name.starts_with(kPairs);
      names.insert(ofPair ? value.name.substr(kPairs.size()) : value.name.substr(0, value.name.size() - 1));
    }
    return Joined(names);
  }
};

std::string TrialName(const SettingsValue& like, int pair) {
  return pair == 0 ? like.name : like.name.substr(0, like.name.size() - 1) + std::to_string(pair);
}

// From number 1 to another.
std::string Renumbered(const std::string& name, int number) {
  if (name == kNumberFiles) return "Output" + std::to_string(number) + ".NumberFiles";
  if (name.starts_with(kPairs)) return "Output" + std::to_string(number) + name.substr(kPairs.size() - 1);
  return name.substr(0, name.size() - 1) + std::to_string(number);
}

// Takes settings one by one, then tells what is to be stored.
class OutputTrial {
 public:
  OutputTrial(Trial& trial, Environment& environment)
      : trial_(trial), environment_(environment), names_(trial) {}

  Outcome Take(const std::pair<std::string, std::string>& given) {
    int pair = 0;
    const SettingsValue* like = names_.Of(given.first, pair);
    if (!like)
      return Failure{"the " + std::string(trial_.info.name) + " output has no setting '" + given.first +
                     "'; it has " + names_.Possible()};
    if (pair > kMostPairs) return Failure{Given(given) + ": there are at most 1000 pairs"};
    const Result<SettingsValue> value = ValueFor(*like, TrialName(*like, pair), given);
    if (!value) return value.AsFailure();
    const std::string stem(CutNumber(like->name).first);
    if (const Outcome possible = CheckRange(*like, stem, given); !possible) return possible;
    if (const Outcome possible = CheckValue(stem, given); !possible) return possible;
    if (stem == kDelaySeconds) {
      own_.push_back(value.Value());
      return {};
    }
    if (pair > 0) pairs_[pair].insert(stem.substr(kPairs.size()));
    checks_.emplace_back(value.Value().name, given);
    trial_.Write(value.Value());
    return {};
  }

  // As number 1.
  Result<std::vector<SettingsValue>> Values() {
    if (const Outcome whole = CheckPairs(); !whole) return whole.AsFailure();
    std::vector<SettingsValue> taken = trial_.Taken();
    for (const auto& [name, given] : checks_)
      if (const Outcome same = CompareTaken(taken, name, given); !same) return same.AsFailure();
    taken.insert(taken.end(), own_.begin(), own_.end());
    return taken;
  }

 private:
  // What the output itself finds out only when it runs.
  Outcome CheckValue(const std::string& stem, const std::pair<std::string, std::string>& given) const {
    if (stem.ends_with("SourceFileName") &&
        !environment_.files.Stat(JoinPath(environment_.dataFolder, given.second)))
      return Failure{Given(given) + " is not possible: there is no such file"};
    if (stem.ends_with("EscapeValues"))
      if (const std::string wrong = WrongEscapeWord(given.second); !wrong.empty()) return Failure{wrong};
    if (stem == kDelaySeconds &&
        WholeNumber<std::uint32_t>(given.second).value_or(kLongestDelay + 1) > kLongestDelay)
      return Failure{Given(given) + " is not possible: it takes 0 to 3600"};
    return {};
  }
  Outcome CheckPairs() {
    if (!names_.hasPairs) return {};
    const int count = pairs_.empty() ? 1 : pairs_.rbegin()->first;
    for (int pair = 1; pair <= count; ++pair)
      for (const char* needed : {"SourceFileName", "DestinationFileName"})
        if (!pairs_[pair].contains(needed))
          return Failure{std::string(needed) + std::to_string(pair) +
                         " is missing: a page needs its template and the place where it goes"};
    trial_.hive.WriteText(trial_.key, std::string(kNumberFiles), std::to_string(count));
    return {};
  }

  Trial& trial_;
  Environment& environment_;
  const Names names_;
  std::vector<SettingsValue> own_;  // what the output does not write by itself
  std::map<int, std::set<std::string>> pairs_;
  std::vector<std::pair<std::string, std::pair<std::string, std::string>>> checks_;  // by stored name
};

}  // namespace

TrialSettings::TrialSettings(const Environment& environment, SettingsHive& scratch)
    : environment_{environment.loop,   scratch,           environment.files,      environment.network,
                   environment.person, environment.carts, environment.dataFolder, "Software\\Trial"},
      scratch_(scratch) {}

Result<std::vector<SettingsValue>> TrialSettings::Service(const NamedValues& given) {
  ServiceEvents nobody;
  const std::string key = environment_.ServiceKey(1);
  const auto taken = [&] {
    clsZEBService service(
        environment_, [](OutputType) { return nullptr; }, nobody);
    service.SetServiceNumber(1);
    scratch_.DeleteKey(key);
    (void)service.StoreServiceInformation();
    return scratch_.Values(key);
  };
  const std::vector<SettingsValue> all = taken();
  std::vector<SettingsValue> values;
  scratch_.DeleteKey(key);
  for (const auto& pair : given) {
    const SettingsValue* like = Find(all, pair.first);
    if (!like) {
      std::set<std::string> names;
      for (const SettingsValue& value : all) names.insert(value.name);
      return Failure{"a service has no setting '" + pair.first + "'; it has " + Joined(names)};
    }
    const Result<SettingsValue> value = ValueFor(*like, like->name, {pair.first, DecodeLenient(pair.second)});
    if (!value) return value.AsFailure();
    if (const Outcome possible = CheckRange(*like, like->name, pair); !possible) return possible.AsFailure();
    WriteSettingsValue(scratch_, key, value.Value());
    values.push_back(value.Value());
  }
  const std::vector<SettingsValue> after = taken();
  for (const auto& pair : given)
    if (const Outcome same = CompareTaken(after, pair.first, {pair.first, DecodeLenient(pair.second)}); !same)
      return same.AsFailure();
  return values;
}

Result<std::vector<SettingsValue>> TrialSettings::Output(OutputType type, int number,
                                                         const NamedValues& given) {
  Trial trial{environment_, scratch_, *FindOutputType(static_cast<std::int32_t>(type))};
  if (!trial.make(type)) return Failure{"this program has no " + std::string(NameOf(type)) + " outputs"};
  OutputTrial outputs(trial, environment_);
  for (const auto& [name, bytes] : given)
    if (const Outcome taken = outputs.Take({name, DecodeLenient(bytes)}); !taken) return taken.AsFailure();
  Result<std::vector<SettingsValue>> values = outputs.Values();
  if (!values) return values;
  for (SettingsValue& value : values.Value()) value.name = Renumbered(value.name, number);
  return values;
}

}  // namespace zeb
