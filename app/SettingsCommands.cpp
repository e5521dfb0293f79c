#include "app/SettingsCommands.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <optional>

#include "core/RegFile.h"
#include "core/SettingsPaths.h"
#include "text/Encodings.h"
#include "text/HexEscapes.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1 };

struct Command {
  SettingsHive& hive;
  FileSystem& files;
  const SettingsOptions& options;
  std::ostream& out;
  std::ostream& err;

  int Fail(const std::string& reason) const {
    err << "zebctl: " << reason << '\n';
    return kFailed;
  }

  std::string Key() const {
    std::string key = DecodeLenient(options.key);
    std::replace(key.begin(), key.end(), '/', '\\');
    if (!StartsWithIgnoringCase(key, "Software\\")) key = ChooseSettingsRoot(hive).inUse + "\\" + key;
    return NormalSettingsKey(key);
  }
  std::string Name() const { return DecodeLenient(options.name.value_or("")); }
};

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
  const std::string key = command.Key(), name = command.Name();
  if (!command.hive.HasValue(key, name)) return NoValue(command, key, name);
  command.out << command.hive.ReadText(key, name, "") << '\n';
  return kDone;
}

int Set(const Command& command) {
  const SettingsOptions& options = command.options;
  if (options.number)
    command.hive.WriteNumber(command.Key(), command.Name(), *options.number);
  else
    command.hive.WriteText(command.Key(), command.Name(), DecodeLenient(options.data));
  return kDone;
}

int Delete(const Command& command) {
  const std::string key = command.Key();
  if (command.options.name) {
    const std::string name = command.Name();
    if (!command.hive.HasValue(key, name)) return NoValue(command, key, name);
    command.hive.DeleteValue(key, name);
    return kDone;
  }
  if (!command.hive.KeyExists(key)) return NoKey(command, key);
  command.hive.DeleteKey(key);
  return kDone;
}

int Import(const Command& command) {
  const std::string& file = command.options.file;
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

int Run(const Command& command) {
  using Action = SettingsOptions::Action;
  switch (command.options.action) {
    case Action::kList:
      return List(command);
    case Action::kGet:
      return Get(command);
    case Action::kSet:
      return Set(command);
    case Action::kDelete:
      return Delete(command);
    case Action::kImport:
      return Import(command);
    case Action::kExport:
      break;
  }
  return Export(command);
}

}  // namespace

int RunSettingsCommand(SettingsHive& hive, FileSystem& files, const SettingsOptions& options,
                       std::ostream& out, std::ostream& err) {
  const Command command{hive, files, options, out, err};
  try {
    const int status = Run(command);
    return status == kDone && !out.flush() ? command.Fail("cannot write to standard output") : status;
  } catch (const std::exception& error) {
    return command.Fail(error.what());
  }
}

}  // namespace zeb
