#include "app/PublisherOptions.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "core/OutputName.h"
#include "text/LetterCase.h"

namespace zeb {

namespace {

using Action = StationOptions::Action;

std::string CheckNumber(const std::string& text) {
  return WholeNumber<int>(text).value_or(0) > 0 ? "" : "takes the number of a service, not '" + text + "'";
}

std::string TypeNames(std::string_view between = ", ") {
  std::string names;
  for (const OutputType type : kOutputTypesOffered)
    names.append(names.empty() ? "" : between).append(NameOf(type));
  return names;
}

std::optional<OutputType> TypeByName(std::string_view name) {
  for (const OutputType type : kOutputTypesOffered)
    if (EqualIgnoringAsciiCase(name, NameOf(type))) return type;
  return std::nullopt;
}

std::string CheckType(const std::string& text) {
  return TypeByName(text) ? "" : "takes one of " + TypeNames() + ", not '" + text + "'";
}

std::string CheckOutput(const std::string& text) {
  return ParseOutputName(text) ? "" : "takes an output such as File1, not '" + text + "'";
}

std::string CheckPair(const std::string& text) {
  return text.find('=') > 0 && text.find('=') != std::string::npos
             ? ""
             : "takes settings as NAME=VALUE, not '" + text + "'";
}

CLI::App& AddGroup(CLI::App& program, const std::string& name, const std::string& help) {
  CLI::App& group = AddCommand(program, name, help);
  RequireCommand(group);
  SetFooter(
      group,
      "Names and values are those of the manual. What is changed is applied to a running zebd at once.");
  return group;
}

void DeclareServices(CLI::App& program) {
  CLI::App& service = AddGroup(program, "service", "the services (stations) of the data folder");
  AddFlag(AddCommand(service, "list", "numbers and names"), "--json", "as JSON");
  CLI::App& add = AddCommand(service, "add", "a new service behind the others; prints its number");
  AddWord(add, "NAME", "its name").Required().Check(CheckNotEmpty);
  AddWords(add, "SETTING=VALUE", "settings, TolvanTCPControlPort=1 for instance").Check(CheckPair);
  CLI::App& remove =
      AddCommand(service, "remove", "a service and its outputs; later ones move down a number");
  AddWord(remove, "N", "its number").Required().Check(CheckNumber).Takes("service");
  CLI::App& rename = AddCommand(service, "rename", "give a service another name");
  AddWord(rename, "N", "its number").Required().Check(CheckNumber).Takes("service");
  AddWord(rename, "NAME", "its new name").Required().Check(CheckNotEmpty);
}

void DeclareOutputs(CLI::App& program) {
  CLI::App& output = AddGroup(program, "output", "the outputs of a service");
  CLI::App& list = AddCommand(output, "list", "the outputs of a service");
  AddWord(list, "N", "the service's number").Required().Check(CheckNumber).Takes("service");
  AddFlag(list, "--json", "as JSON");
  CLI::App& add = AddCommand(output, "add", "a new output; prints its name");
  AddWord(add, "N", "the service's number").Required().Check(CheckNumber).Takes("service");
  AddWord(add, "TYPE", TypeNames()).Required().Check(CheckType).Takes("=" + TypeNames(" "));
  AddWords(add, "SETTING=VALUE",
           "settings without the output's number, DestinationFileName1=/srv/now.html for instance")
      .Check(CheckPair);
  CLI::App& remove = AddCommand(output, "remove", "an output; later ones of its type move down a number");
  AddWord(remove, "N", "the service's number").Required().Check(CheckNumber).Takes("service");
  AddWord(remove, "OUTPUT", "File1 for instance").Required().Check(CheckOutput).Takes("output");
}

StationOptions StationOf(const CLI::App& command, const std::string& group) {
  static const std::map<std::string, Action> actions = {
      {"service list", Action::kListServices},    {"service add", Action::kAddService},
      {"service remove", Action::kRemoveService}, {"service rename", Action::kRenameService},
      {"output list", Action::kListOutputs},      {"output add", Action::kAddOutput},
      {"output remove", Action::kRemoveOutput},
  };
  StationOptions options;
  options.action = actions.at(group + " " + NameOf(command));
  const auto has = [&](std::initializer_list<Action> any) {
    return std::find(any.begin(), any.end(), options.action) != any.end();
  };
  if (has({Action::kListServices, Action::kListOutputs})) options.json = IsGiven(command, "--json");
  if (!has({Action::kListServices, Action::kAddService}))
    options.service = WholeNumber<int>(ValueOf(command, "N")).value_or(0);
  if (has({Action::kAddService, Action::kRenameService})) options.name = ValueOf(command, "NAME");
  if (has({Action::kAddOutput})) options.type = *TypeByName(ValueOf(command, "TYPE"));
  if (has({Action::kRemoveOutput})) {
    const OutputName output = ParseOutputName(ValueOf(command, "OUTPUT")).Value();
    options.type = output.type;
    options.output = output.number;
  }
  if (!has({Action::kAddService, Action::kAddOutput})) return options;
  for (const std::string& word : WordsOf(command, "SETTING=VALUE")) {
    const std::size_t equals = word.find('=');
    options.values.emplace_back(word.substr(0, equals), word.substr(equals + 1));
  }
  return options;
}

void DeclareSetup(CLI::App& program) {
  CLI::App& setup =
      AddCommand(program, "setup", "set a station up: asks, tries each answer, stores all at once");
  for (const SetupOption& option : SetupOptionList())
    AddValue(setup, std::string("--") + option.name, option.value, option.help).Takes(option.takes);
  AddFlag(setup, "--yes", "store without asking whether to");
  AddFlag(setup, "--keep", "also outputs that cannot be reached now");
  SetFooter(setup,
            "What is given is not asked. Exit status: 0 stored, 1 nothing stored, 2 an answer is missing "
            "or wrong and there is no terminal to ask at.");
}

SetupOptions SetupOf(const CLI::App& command) {
  SetupOptions options{.given = {}, .yes = IsGiven(command, "--yes"), .keep = IsGiven(command, "--keep")};
  for (const SetupOption& option : SetupOptionList()) {
    const std::string name = std::string("--") + option.name;
    if (IsGiven(command, name)) options.given[option.name] = ValueOf(command, name);
  }
  return options;
}

}  // namespace

void DeclarePublisherCommands(CLI::App& program) {
  DeclareSetup(program);
  CLI::App& status = AddCommand(program, "status", "what the publisher of this machine is doing");
  AddFlag(status, "--json", "as JSON");
  AddFlag(status, "--watch", "again each second, until it is interrupted");
  SetFooter(status, "Exit status: 0 all is well, 1 something fails, 3 zebd does not run.");
  AddWord(AddCommand(program, "update", "the outputs show what is on air once more"), "SERVICE",
          "the service's number; all services without one")
      .Check(CheckNumber)
      .Takes("service");
  SetFooter(AddCommand(program, "reload", "the publisher reads the settings again"),
            "Exit status: 0 it has, 1 it could not, 3 zebd does not run.");
  CLI::App& dashboard = AddCommand(program, "dashboard", "the web page of the publisher");
  RequireCommand(dashboard);
  AddCommand(dashboard, "password", "set the password: asked for twice, or a line of standard input");
  CLI::App& test = AddCommand(program, "test", "one attempt of an output at its server or files");
  AddWord(test, "SERVICE", "the service's number").Required().Check(CheckNumber).Takes("service");
  AddWord(test, "OUTPUT", "File1 for instance").Required().Check(CheckOutput).Takes("output");
  SetFooter(test, "Nothing is published. Exit status: 0 all is well, 1 a step failed.");
  CLI::App& support = AddCommand(program, "support", "a zip file with what somebody needs to see who helps");
  AddWord(support, "FILE.zip", "the file to be written, or the folder for it")
      .Required()
      .Check(CheckNotEmpty)
      .Takes("file");
  AddValue(support, "--reason", "TEXT", "what help is needed with");
  AddValue(support, "--reference", "TEXT", "what the helper calls it");
  AddFlag(support, "--templates", "with the template files");
  SetFooter(support, "Passwords are left out. Nothing is sent: look into the file before it is given away.");
  DeclareServices(program);
  DeclareOutputs(program);
}

std::optional<PublisherOptions> PublisherCommandOf(const CLI::App& command) {
  const std::string name = NameOf(command), group = GroupOf(command);
  if (group == "service" || group == "output") return PublisherOptions(StationOf(command, group));
  if (group == "dashboard") return PublisherOptions(PasswordOptions());
  if (name == "status")
    return PublisherOptions(StatusOptions{IsGiven(command, "--json"), IsGiven(command, "--watch")});
  if (name == "support")
    return PublisherOptions(SupportOptions{ValueOf(command, "FILE.zip"), ValueOf(command, "--reason"),
                                           ValueOf(command, "--reference"), IsGiven(command, "--templates")});
  if (name == "setup") return PublisherOptions(SetupOf(command));
  if (name == "test")
    return PublisherOptions(TestOptions{WholeNumber<int>(ValueOf(command, "SERVICE")).value_or(0),
                                        ParseOutputName(ValueOf(command, "OUTPUT")).Value()});
  if (name == "reload") return PublisherOptions(ReloadOptions());
  if (name == "update")
    return PublisherOptions(UpdateOptions{WholeNumber<int>(ValueOf(command, "SERVICE")).value_or(0)});
  return std::nullopt;
}

}  // namespace zeb
