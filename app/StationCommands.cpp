#include "app/StationCommands.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <exception>
#include <functional>
#include <stdexcept>

#include "app/TrialSettings.h"
#include "core/SettingsPaths.h"
#include "core/SettingsTree.h"
#include "core/clsZEBService.h"
#include "outputs/OutputTable.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

constexpr int kMostOutputs = 1000;                 // of a type; the service takes no more
constexpr int kHighestControlPort = 65535 - 6900;  // it is counted from 6900
constexpr const char* kServiceName = "ServiceName";
constexpr const char* kNumberOutputs = "NumberOutputs";
constexpr const char* kControlPort = "TolvanTCPControlPort";

// Thrown inside a transaction, so that nothing of it is stored.
struct Refused : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Command {
  Environment& environment;
  SettingsHive& scratch;
  const StationOptions& options;
  std::ostream& out;

  SettingsHive& Hive() const { return environment.hive; }
  int Count() const { return ReadNumberServices(Hive(), environment.settingsRoot); }
  std::string Key() const { return environment.ServiceKey(options.service); }
  std::string TypeKey() const {
    return Key() + "\\" + std::string(FindOutputType(static_cast<std::int32_t>(options.type))->settingsKey);
  }
  std::string NameOfService(int number) const {
    return OneLine(
        Hive().ReadText(environment.ServiceKey(number), kServiceName, ServiceSettings().ServiceName));
  }
  void NeedService() const {
    if (options.service >= 1 && options.service <= Count()) return;
    throw Refused("there is no service " + std::to_string(options.service) + "; there are " +
                  std::to_string(Count()));
  }
};

void WriteAll(SettingsHive& hive, const std::string& key, const std::vector<SettingsValue>& values) {
  for (const SettingsValue& value : values) WriteSettingsValue(hive, key, value);
}

// ---- Services

void ListServices(const Command& command) {
  boost::json::array list;
  for (int number = 1; number <= command.Count(); ++number) {
    const std::string name = command.NameOfService(number);
    if (command.options.json)
      list.push_back({{"number", number}, {"name", name}});
    else
      command.out << number << "  " << name << '\n';
  }
  if (command.options.json)
    command.out << boost::json::serialize(boost::json::object{{"services", std::move(list)}}) << '\n';
}

// A port that another service listens on would stay silent.
void CheckControlPort(const Command& command) {
  for (const auto& [name, value] : command.options.values) {
    if (!EqualIgnoringAsciiCase(name, kControlPort) || LeadingInteger(value) == 0) continue;
    if (LeadingInteger(value) > kHighestControlPort)
      throw Refused("control port " + value + " is none: they end at " + std::to_string(kHighestControlPort));
    for (int number = 1; number <= command.Count(); ++number)
      if (command.Hive().ReadNumber(command.environment.ServiceKey(number), kControlPort, 0) ==
          LeadingInteger(value))
        throw Refused("control port " + value + " is that of service " + std::to_string(number) + " '" +
                      command.NameOfService(number) + "' already");
  }
}

void AddService(const Command& command) {
  const int number = command.Count() + 1;
  if (number > kMaxServices) throw Refused("there are " + std::to_string(kMaxServices) + " services already");
  NamedValues given{{kServiceName, command.options.name}};
  given.insert(given.end(), command.options.values.begin(), command.options.values.end());
  const auto values = TrialSettings(command.environment, command.scratch).Service(given);
  if (!values) throw Refused(values.Reason());
  CheckControlPort(command);
  const std::string key = command.environment.ServiceKey(number);
  command.Hive().DeleteKey(key);  // what an interrupted change may have left
  WriteAll(command.Hive(), key, values.Value());
  WriteNumberServices(command.Hive(), command.environment.settingsRoot, number);
  command.out << number << '\n';
}

// Later ones keep all that they have, known here or not.
void RemoveService(const Command& command) {
  command.NeedService();
  SettingsHive& hive = command.Hive();
  const int count = command.Count();
  for (int number = command.options.service; number < count; ++number) {
    const SettingsTree next = ReadSettingsTree(hive, command.environment.ServiceKey(number + 1));
    hive.DeleteKey(command.environment.ServiceKey(number));
    WriteSettingsTree(hive, command.environment.ServiceKey(number), next);
  }
  hive.DeleteKey(command.environment.ServiceKey(count));
  WriteNumberServices(hive, command.environment.settingsRoot, count - 1);
}

void RenameService(const Command& command) {
  command.NeedService();
  command.Hive().WriteText(command.Key(), kServiceName, DecodeLenient(command.options.name));
}

// ---- Outputs

int CountOutputs(const Command& command) {
  return LeadingInteger(command.Hive().ReadText(command.TypeKey(), kNumberOutputs, "0"));
}

// Loads the service, has something done with it, and stores it again when that is asked for.
void WithService(const Command& command, const std::function<bool(clsZEBService&)>& work) {
  ServiceEvents nobody;
  clsZEBService service(command.environment, MakeOutputFactory(command.environment), nobody);
  service.SetServiceNumber(command.options.service);
  const bool changed = work(service);
  if (changed && !service.StoreServiceInformation()) throw Refused("the settings could not be stored");
}

void ListOutputs(const Command& command) {
  command.NeedService();
  boost::json::array list;
  WithService(command, [&](clsZEBService& service) {
    for (std::int32_t code = 1; code <= kNumberOutputTypes; ++code)
      for (int i = 1; i <= service.OutputCount(code); ++i) {
        const auto type = static_cast<OutputType>(code);
        const std::string name = std::string(NameOf(type)) + std::to_string(i);
        const std::string info = OneLine(service.Output(type, i)->GetInformationString());
        if (command.options.json)
          list.push_back({{"type", NameOf(type)}, {"number", i}, {"name", name}, {"info", info}});
        else
          command.out << name << "  " << info << '\n';
      }
    return false;
  });
  if (command.options.json)
    command.out << boost::json::serialize(boost::json::object{{"outputs", std::move(list)}}) << '\n';
}

void AddOutput(const Command& command) {
  command.NeedService();
  const int number = CountOutputs(command) + 1;
  if (number > kMostOutputs) throw Refused("there are 1000 outputs of this type already");
  const auto values = TrialSettings(command.environment, command.scratch)
                          .Output(command.options.type, number, command.options.values);
  if (!values) throw Refused(values.Reason());
  WriteAll(command.Hive(), command.TypeKey(), values.Value());
  command.Hive().WriteText(command.TypeKey(), kNumberOutputs, std::to_string(number));
  command.out << NameOf(command.options.type) << number << '\n';
}

void RemoveOutput(const Command& command) {
  command.NeedService();
  const int count = CountOutputs(command);
  if (command.options.output > count)
    throw Refused("service " + std::to_string(command.options.service) + " has no " +
                  std::string(NameOf(command.options.type)) + std::to_string(command.options.output) +
                  "; it has " + std::to_string(count) + " of that type");
  WithService(command, [&](clsZEBService& service) {
    service.RemoveOutput(command.options.type, command.options.output);
    return true;
  });
}

void Run(const Command& command) {
  using Action = StationOptions::Action;
  switch (command.options.action) {
    case Action::kListServices:
      return ListServices(command);
    case Action::kAddService:
      return AddService(command);
    case Action::kRemoveService:
      return RemoveService(command);
    case Action::kRenameService:
      return RenameService(command);
    case Action::kListOutputs:
      return ListOutputs(command);
    case Action::kAddOutput:
      return AddOutput(command);
    case Action::kRemoveOutput:
      return RemoveOutput(command);
  }
}

}  // namespace

Outcome RunStationCommand(Environment& environment, SettingsHive& scratch, const StationOptions& options,
                          std::ostream& out) {
  const Command command{environment, scratch, options, out};
  try {
    if (options.Changes())
      environment.hive.Transaction([&] { Run(command); });
    else
      environment.hive.ReadTransaction([&] { Run(command); });
    return {};
  } catch (const std::exception& error) {
    return Failure{error.what()};
  }
}

}  // namespace zeb
