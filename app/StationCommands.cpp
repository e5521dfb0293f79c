#include "app/StationCommands.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <exception>
#include <type_traits>
#include <utility>

#include "core/SettingsPaths.h"
#include "core/StoredServices.h"
#include "core/clsZEBService.h"
#include "dialogs/ServiceEntry.h"
#include "outputs/OutputTable.h"
#include "text/Encodings.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

struct Command {
  Environment& environment;
  const StationOptions& options;
  std::ostream& out;

  SettingsHive& Hive() const { return environment.hive; }
  ServiceEntry Entry() const {
    return {environment.hive, environment.files, environment.dataFolder, environment.settingsRoot};
  }
  ServiceEntry::Settings Entered() const {
    ServiceEntry::Settings entered;
    for (const auto& [name, value] : options.values)
      entered.push_back({DecodeLenient(name), DecodeLenient(value)});
    return entered;
  }
  std::string Name() const { return DecodeLenient(options.name); }
};

void Write(const Command& command, const char* listName, boost::json::array list) {
  command.out << boost::json::serialize(boost::json::object{{listName, std::move(list)}}) << '\n';
}

Outcome ListServices(const Command& command) {
  const std::string& root = command.environment.settingsRoot;
  boost::json::array list;
  for (int number = 1; number <= ReadNumberServices(command.Hive(), root); ++number) {
    const std::string name = OneLine(command.Hive().ReadText(command.environment.ServiceKey(number),
                                                             "ServiceName", ServiceSettings().ServiceName));
    if (command.options.json)
      list.push_back({{"number", number}, {"name", name}});
    else
      command.out << number << "  " << name << '\n';
  }
  if (command.options.json) Write(command, "services", std::move(list));
  return {};
}

Outcome ListOutputs(const Command& command) {
  const StoredServices stored(command.Hive(), command.environment.settingsRoot);
  if (Outcome there = stored.Check(command.options.service); !there) return there;
  ServiceEvents nobody;
  clsZEBService service(command.environment, MakeOutputFactory(command.environment), nobody);
  service.SetServiceNumber(command.options.service);
  boost::json::array list;
  for (const OutputType type : kOutputTypesOffered)
    for (int i = 1; const OutputPtr output = service.Output(type, i); ++i) {
      const std::string name = OutputName{type, i}.Text(), info = OneLine(output->GetInformationString());
      if (command.options.json)
        list.push_back({{"type", NameOf(type)}, {"number", i}, {"name", name}, {"info", info}});
      else
        command.out << name << "  " << info << '\n';
    }
  if (command.options.json) Write(command, "outputs", std::move(list));
  return {};
}

template <class Made>
Outcome Tell(const Command& command, const Result<Made>& made) {
  if (!made) return made;
  if constexpr (std::is_same_v<Made, OutputName>)
    command.out << made.Value().Text() << '\n';
  else
    command.out << made.Value() << '\n';
  return {};
}

Outcome Run(const Command& command) {
  using Action = StationOptions::Action;
  const StationOptions& options = command.options;
  ServiceEntry entry = command.Entry();
  switch (options.action) {
    case Action::kListServices:
      return ListServices(command);
    case Action::kAddService:
      return Tell(command, entry.AddService(command.Name(), command.Entered()));
    case Action::kRemoveService:
      return entry.RemoveService(options.service);
    case Action::kRenameService:
      return entry.RenameService(options.service, command.Name());
    case Action::kListOutputs:
      return ListOutputs(command);
    case Action::kAddOutput:
      return Tell(command, entry.AddOutput(options.service, options.type, command.Entered()));
    case Action::kRemoveOutput:
      break;
  }
  return entry.RemoveOutput(options.service, {options.type, options.output});
}

}  // namespace

Outcome RunStationCommand(Environment& environment, const StationOptions& options, std::ostream& out) {
  const Command command{environment, options, out};
  try {
    if (options.Changes()) return Run(command);  // in a transaction of its own
    Outcome listed;
    environment.hive.ReadTransaction([&] { listed = Run(command); });
    return listed;
  } catch (const std::exception& error) {
    return Failure{error.what()};
  }
}

}  // namespace zeb
