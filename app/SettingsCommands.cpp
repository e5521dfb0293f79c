#include "app/SettingsCommands.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <optional>
#include <string_view>

#include "core/RegFile.h"
#include "core/SettingsPaths.h"
#include "text/Encodings.h"
#include "text/HexEscapes.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

struct Command {
  SettingsHive& hive;
  FileSystem& files;
  std::vector<std::string> arguments;  // behind the command's name
  std::ostream& out;
  std::ostream& err;

  int Fail(const std::string& reason, ExitStatus status = kFailed) const {
    err << "zebctl: " << reason << '\n';
    return status;
  }

  // The key that the argument names; the settings root when there is none.
  std::string Key() const {
    std::string key = arguments.empty() ? "" : arguments[0];
    std::replace(key.begin(), key.end(), '/', '\\');
    if (!StartsWithIgnoringCase(key, "Software\\")) key = ChooseSettingsRoot(hive).inUse + "\\" + key;
    return NormalSettingsKey(key);
  }
};

std::optional<std::uint32_t> WholeNumber(const std::string& text) {
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  if (number < std::numeric_limits<std::int32_t>::min() || number > std::numeric_limits<std::uint32_t>::max())
    return std::nullopt;
  return static_cast<std::uint32_t>(number);
}

int NoKey(const Command& command, const std::string& key) {
  return command.Fail("there is no key '" + key + "'");
}

int NoValue(const Command& command, const std::string& key, const std::string& name) {
  return command.Fail("there is no value '" + name + "' in '" + key + "'");
}

// Keys end in "\"; texts are in double quotes, numbers are not.
int List(const Command& command) {
  const std::string key = command.Key();
  if (!command.hive.KeyExists(key)) return NoKey(command, key);
  for (const std::string& name : command.hive.SubKeys(key)) command.out << name << "\\\n";
  for (const SettingsValue& value : command.hive.Values(key)) {
    command.out << value.name << '=';
    if (const auto* text = std::get_if<std::string>(&value.data))
      command.out << '"' << EscapeValue(*text) << "\"\n";
    else
      command.out << static_cast<std::int32_t>(std::get<std::uint32_t>(value.data)) << '\n';
  }
  return kDone;
}

int Get(const Command& command) {
  const std::string key = command.Key();
  const std::string& name = command.arguments[1];
  if (!command.hive.HasValue(key, name)) return NoValue(command, key, name);
  command.out << command.hive.ReadText(key, name, "") << '\n';
  return kDone;
}

int Set(const Command& command) {
  const std::string key = command.Key();
  const std::string& name = command.arguments[1];
  const std::string& data = command.arguments[2];
  if (command.arguments.size() == 3) {
    command.hive.WriteText(key, name, data);
    return kDone;
  }
  if (command.arguments[3] != "--number")
    return command.Fail("'" + command.arguments[3] + "' is not --number", kWrongUsage);
  const std::optional<std::uint32_t> number = WholeNumber(data);
  if (!number) return command.Fail("'" + data + "' is not a whole number of 32 bits", kWrongUsage);
  command.hive.WriteNumber(key, name, static_cast<std::int32_t>(*number));
  return kDone;
}

int Delete(const Command& command) {
  const std::string key = command.Key();
  if (command.arguments.size() == 2) {
    const std::string& name = command.arguments[1];
    if (!command.hive.HasValue(key, name)) return NoValue(command, key, name);
    command.hive.DeleteValue(key, name);
    return kDone;
  }
  if (command.arguments[0].empty()) return command.Fail("the key to delete must be named", kWrongUsage);
  if (!command.hive.KeyExists(key)) return NoKey(command, key);
  command.hive.DeleteKey(key);
  return kDone;
}

int Import(const Command& command) {
  const std::string& file = command.arguments[0];
  const Result<std::string> bytes = command.files.Read(file, kMaxRegFileBytes);
  if (!bytes) return command.Fail(bytes.Reason());
  const Result<RegSummary> summary = ImportRegFile(command.hive, bytes.Value());
  if (!summary) return command.Fail("nothing imported from '" + file + "': " + summary.Reason());
  command.out << summary.Value().Text() << '\n';
  return kDone;
}

int Export(const Command& command) {
  const std::string key = command.Key();
  if (!command.hive.KeyExists(key)) return NoKey(command, key);
  command.out << ExportRegFile(command.hive, key);
  return kDone;
}

struct CommandLine {
  std::string_view name;
  std::string_view usage;
  std::size_t fewest, most;  // arguments
  int (*run)(const Command&);
};

constexpr CommandLine kCommands[] = {
    {"list", "list [KEY]", 0, 1, List},
    {"get", "get KEY NAME", 2, 2, Get},
    {"set", "set KEY NAME DATA [--number]", 3, 4, Set},
    {"delete", "delete KEY [NAME]", 1, 2, Delete},
    {"import", "import FILE.reg", 1, 1, Import},
    {"export", "export [KEY]", 0, 1, Export},
};

int Run(const std::string& name, const Command& command) {
  for (const CommandLine& line : kCommands) {
    if (line.name != name) continue;
    if (command.arguments.size() < line.fewest || command.arguments.size() > line.most)
      return command.Fail("usage: zebctl settings " + std::string(line.usage), kWrongUsage);
    const int status = line.run(command);
    if (status == kDone && !command.out.flush()) return command.Fail("cannot write to standard output");
    return status;
  }
  return command.Fail("settings has no command '" + name + "'", kWrongUsage);
}

}  // namespace

int RunSettingsCommand(SettingsHive& hive, FileSystem& files, const std::vector<std::string>& arguments,
                       std::ostream& out, std::ostream& err) {
  Command command{hive, files, {}, out, err};
  try {
    if (arguments.empty())
      return command.Fail("usage: zebctl settings list|get|set|delete|import|export ...", kWrongUsage);
    for (std::size_t i = 1; i < arguments.size(); ++i)
      command.arguments.push_back(arguments[0] == "import" ? arguments[i] : DecodeLenient(arguments[i]));
    return Run(arguments[0], command);
  } catch (const std::exception& error) {
    return command.Fail(error.what());
  }
}

const char kSettingsUsage[] =
    "  zebctl [--home DIR] settings list [KEY]\n"
    "                      settings get KEY NAME\n"
    "                      settings set KEY NAME DATA [--number]\n"
    "                      settings delete KEY [NAME]\n"
    "                      settings import FILE.reg\n"
    "                      settings export [KEY]\n";

}  // namespace zeb
