#include "core/StoredServices.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "core/SettingsPaths.h"
#include "core/SettingsTree.h"
#include "core/clsZEBService.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::size_t kMostDigits = 9;

// Where an output's number stands in the name of one of its values.
struct NumberPlace {
  std::size_t at = 0, size = 0;
  int number = 0;
};

std::optional<NumberPlace> NumberAt(std::string_view name, std::size_t at, std::size_t size) {
  if (size == 0 || size > kMostDigits || name[at] == '0') return std::nullopt;
  return NumberPlace{at, size, LeadingDigits(name.substr(at, size))};
}

// "ServerPort12", "Output12.AddNoCache1": 12. Nothing for a value of all outputs. The rule knows no names, so
// values of other versions move too.
std::optional<NumberPlace> OutputNumberIn(std::string_view name) {
  constexpr std::string_view kPairStart = "Output";
  if (EqualIgnoringAsciiCase(name.substr(0, kPairStart.size()), kPairStart)) {
    const std::size_t end = std::min(name.find_first_not_of(kDigits, kPairStart.size()), name.size());
    if (end < name.size() && name[end] == '.')
      return NumberAt(name, kPairStart.size(), end - kPairStart.size());
  }
  const std::size_t last = name.find_last_not_of(kDigits);
  const std::size_t at = last == std::string_view::npos ? 0 : last + 1;
  return NumberAt(name, at, name.size() - at);
}

}  // namespace

StoredServices::StoredServices(SettingsHive& hive, std::string settingsRoot)
    : hive_(hive), root_(std::move(settingsRoot)) {}

int StoredServices::Count() const {
  return ReadNumberServices(hive_, root_);
}

Outcome StoredServices::Check(int service) const {
  const int count = Count();
  if (service >= 1 && service <= count) return {};
  std::string there = "there are none";
  if (count == 1) there = "there is only service 1";
  if (count > 1) there = "they are numbered from 1 to " + std::to_string(count);
  return Failure{"there is no service " + std::to_string(service) + ": " + there};
}

std::string StoredServices::Key(int service) const {
  return root_ + "\\Service" + std::to_string(service);
}

std::string StoredServices::KeyOf(int service, OutputType type) const {
  return Key(service) + "\\" + std::string(FindOutputType(static_cast<std::int32_t>(type))->settingsKey);
}

Outcome StoredServices::CheckControlPort(std::int32_t port, int except) const {
  if (port == 0) return {};
  for (int number = 1; number <= Count(); ++number)
    if (number != except && hive_.ReadNumber(Key(number), "TolvanTCPControlPort", 0) == port)
      return Failure{"control port " + std::to_string(port) + " is that of service " +
                     std::to_string(number) + " already"};
  return {};
}

Result<int> StoredServices::Add() {
  const int number = Count() + 1;
  if (number > kMaxServices)
    return Failure{"there are " + std::to_string(kMaxServices) + " services already, which is the most"};
  const std::string name = "Service" + std::to_string(number);
  if (hive_.KeyExists(Key(number)))
    return Failure{"the settings still hold a " + name +
                   ", which is not among the services: `zebctl settings "
                   "delete " +
                   name + "` removes it, `zebctl settings set '' NumberServices " + std::to_string(number) +
                   " --number` brings it back"};
  WriteNumberServices(hive_, root_, number);
  return number;
}

Outcome StoredServices::Remove(int service) {
  if (Outcome there = Check(service); !there) return there;
  const int count = Count();
  for (int number = service; number <= count; ++number) {
    hive_.DeleteKey(Key(number));
    if (number < count) WriteSettingsTree(hive_, Key(number), ReadSettingsTree(hive_, Key(number + 1)));
  }
  WriteNumberServices(hive_, root_, count - 1);
  return {};
}

int StoredServices::OutputCount(int service, OutputType type) const {
  const std::int32_t count = LeadingInteger(hive_.ReadText(KeyOf(service, type), "NumberOutputs", "0"));
  return std::clamp(count, 0, kMaxOutputsOfType);
}

Outcome StoredServices::Check(int service, const OutputName& output) const {
  if (Outcome there = Check(service); !there) return there;
  const int count = OutputCount(service, output.type);
  if (output.number >= 1 && output.number <= count) return {};
  const std::string type(NameOf(output.type));
  std::string there = "it has no " + type + " output";
  if (count == 1) there = "its only one is " + type + "1";
  if (count > 1) there = "there are " + type + "1 to " + type + std::to_string(count);
  return Failure{"service " + std::to_string(service) + " has no output " + output.Text() + ": " + there};
}

Result<OutputName> StoredServices::AddOutput(int service, OutputType type) {
  if (const Outcome there = Check(service); !there) return there.AsFailure();
  const OutputName output{type, OutputCount(service, type) + 1};
  if (output.number > kMaxOutputsOfType)
    return Failure{"service " + std::to_string(service) + " has " + std::to_string(kMaxOutputsOfType) + " " +
                   std::string(NameOf(type)) + " outputs already, which is the most"};
  const std::string key = KeyOf(service, type);
  RemoveValues(key, output.number, false);  // of one that was there before, so that defaults are defaults
  hive_.WriteText(key, "NumberOutputs", std::to_string(output.number));
  return output;
}

Outcome StoredServices::RemoveOutput(int service, const OutputName& output) {
  if (Outcome there = Check(service, output); !there) return there;
  const std::string key = KeyOf(service, output.type);
  const int count = OutputCount(service, output.type);
  RemoveValues(key, output.number, true);
  hive_.WriteText(key, "NumberOutputs", std::to_string(count - 1));
  return {};
}

Outcome StoredServices::EmptyOutput(int service, const OutputName& output) {
  if (Outcome there = Check(service, output); !there) return there;
  RemoveValues(KeyOf(service, output.type), output.number, false);
  return {};
}

// All names go before the first new one is written, for a new one may be an old one of the next output.
void StoredServices::RemoveValues(const std::string& typeKey, int number, bool moveLater) {
  std::vector<SettingsValue> moved;
  for (SettingsValue& value : hive_.Values(typeKey)) {
    const std::optional<NumberPlace> place = OutputNumberIn(value.name);
    if (!place || place->number < number || (place->number > number && !moveLater)) continue;
    hive_.DeleteValue(typeKey, value.name);
    if (place->number == number) continue;
    value.name.replace(place->at, place->size, std::to_string(place->number - 1));
    moved.push_back(std::move(value));
  }
  for (const SettingsValue& value : moved) WriteSettingsValue(hive_, typeKey, value);
}

}  // namespace zeb
