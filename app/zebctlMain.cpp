// zebctl: the command-line companion: settings, messages to a service, previews of templates.

#include <unistd.h>

#include <QCoreApplication>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/ConsoleOperator.h"
#include "app/ExpandCommand.h"
#include "app/SendCommand.h"
#include "app/SetCommand.h"
#include "app/SettingsCommands.h"
#include "core/CsvCartStore.h"
#include "core/SettingsPaths.h"
#include "platform/DirectLineWriter.h"
#include "platform/posix/DataFolder.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/SqliteHive.h"
#include "platform/posix/StandardError.h"
#include "platform/posix/SystemLocale.h"
#include "platform/qt/QtLoop.h"
#include "platform/qt/QtNetwork.h"
#include "platform/simulated/MemoryHive.h"
#include "platform/simulated/SimulatedLoop.h"
#include "platform/simulated/SimulatedNetwork.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

constexpr char kHelp[] =
    "zebctl: settings, messages and template previews for ZEB\n"
    "\n"
    "Settings, of the data folder (--home, else $ZEB_HOME, /var/lib/zeb, ~/.local/share/zeb):\n";
constexpr char kSendAndExpandHelp[] =
    "    KEY is Service1\\File and the like (Service1/File will do), or a whole path Software\\...\n"
    "    `systemctl reload zebd` makes a running publisher read what was changed.\n"
    "\n"
    "Messages, as a playout system sends them:\n"
    "  zebctl send [--host H] [--port P] [--name NAME] [MESSAGE ...]\n"
    "    Without a MESSAGE the lines of standard input are sent as they come. Port 6901 unless told "
    "otherwise.\n"
    "    zebctl send 'SET_CURRENT_ITEM IType=7 ITitle=\"Paper Moons\" AName1=\"Ada Quill\"'\n"
    "\n"
    "By hand, as the same messages (with --host, --port, --controller NAME as for send):\n"
    "  zebctl set current|next|previous|coming [--title T] [--artist A] [--type song|link|spot|other|N]\n"
    "             [--cart N] [--notes T]\n"
    "  zebctl set promote next|coming [the same options]     makes the next or coming item the current one\n"
    "  zebctl set presenter --reference R --name N\n"
    "  zebctl set show --reference R --title T\n"
    "\n"
    "Previews: what a template gives, without any output:\n"
    "  zebctl [--home DIR] expand [options] [TEMPLATE-FILE]      (standard input without a file)\n"
    "    --messages FILE     lines as for send, taken in before the template is expanded\n"
    "    --page              as the file output treats a page\n"
    "    --simple-text T     the template behind <ZEB_SIMPLETEXT>\n"
    "    --url-encode        values URL-encoded, as in HTTP requests\n"
    "    --list-files        the files that the text refers to, on standard error\n"
    "    --now \"YYYY-MM-DD hh:mm:ss\"   the moment that tags see\n"
    "    --service N         with the settings of service N\n"
    "\n"
    "Exit status: 0 done, 1 failed (one line says why), 2 wrong usage or control refused.\n";

struct CommandLine {
  std::string home;
  std::string command;
  std::vector<std::string> arguments;  // those behind the command
  bool showHelp = false;
  bool showVersion = false;
};

int Fail(const std::string& reason) {
  std::cerr << "zebctl: " << reason << std::endl;
  return 1;
}

int WrongUsage(const std::string& reason) {
  std::cerr << "zebctl: " << reason << " (zebctl --help)" << std::endl;
  return 2;
}

Result<CommandLine> ReadCommandLine(const std::vector<std::string>& words) {
  CommandLine line;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--help" || word == "-h" || word == "help") {
      line.showHelp = true;
      return line;
    }
    if (word == "--version") {
      line.showVersion = true;
      return line;
    }
    if (word == "--home" && i + 1 < words.size()) {
      line.home = words[++i];
    } else if (word.rfind("--home=", 0) == 0) {
      line.home = word.substr(7);
    } else if (!word.empty() && word.front() == '-') {
      return Failure{word == "--home" ? "--home needs a folder" : "unknown option '" + word + "'"};
    } else {
      line.command = word;
      line.arguments.assign(words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
      return line;
    }
  }
  return Failure{"a command is missing: settings, send, set or expand"};
}

// Only what changes settings makes a settings file where there is none.
Result<std::unique_ptr<SettingsHive>> OpenHive(FileSystem& files, const std::string& folder, bool toChange) {
  const std::string path = folder + "/settings.db";
  if (!toChange && !files.Stat(path)) return std::unique_ptr<SettingsHive>(std::make_unique<MemoryHive>());
  if (const Outcome made = files.CreateFolders(folder); !made) return Failure{made.Reason()};
  Result<std::unique_ptr<SqliteHive>> hive = SqliteHive::Open(path);
  if (!hive) return Failure{hive.Reason()};
  return std::unique_ptr<SettingsHive>(std::move(hive.Value()));
}

int Settings(const CommandLine& line, const std::string& folder) {
  PosixFiles files;
  const std::string action = line.arguments.empty() ? "" : line.arguments.front();
  const bool toChange = action == "set" || action == "import";
  const auto hive = OpenHive(files, folder, toChange);
  if (!hive) return Fail(hive.Reason());
  const int status = RunSettingsCommand(*hive.Value(), files, line.arguments, std::cout, std::cerr);
  std::cout.flush();
  return status == 0 && !std::cout ? Fail("cannot write to standard output") : status;
}

bool ReadInput(std::string& bytes) {
  bytes.resize(64 * 1024);
  ssize_t count = 0;
  do count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
  while (count < 0 && errno == EINTR);
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return count > 0;
}

// Ends without destroying anything: a worker thread may still be waiting for standard input.
[[noreturn]] void EndAtOnce(int status) {
  std::cout.flush();
  std::cerr.flush();
  std::_Exit(status);
}

int Send(Result<SendOptions> options, int argc, char** argv) {
  if (!options) return WrongUsage(options.Reason());
  QtLoop::ChoosePlainDispatcher();
  const QCoreApplication application(argc, argv);
  QtLoop loop;
  QtNetwork network(loop);
  RunSendCommand(loop, network, std::move(options.Value()), ReadInput, std::cerr, EndAtOnce);
  return loop.Run();
}

Result<std::string> ReadTemplate(FileSystem& files, const std::string& name) {
  if (!name.empty() && name != "-") return files.Read(name, kMaxFileBytes);
  std::string all, bytes;
  while (ReadInput(bytes)) {
    all += bytes;
    if (all.size() > kMaxFileBytes) return Failure{"the template is longer than 16 MiB"};
  }
  return all;
}

int Expand(const CommandLine& line, const std::string& folder, int argc, char** argv) {
  const Result<ExpandOptions> read = ReadExpandOptions(line.arguments);
  if (!read) return WrongUsage(read.Reason());
  const ExpandOptions& options = read.Value();
  PosixFiles files;
  std::string messages;
  if (!options.messagesFile.empty()) {
    Result<std::string> bytes = files.Read(options.messagesFile, kMaxFileBytes);
    if (!bytes) return Fail(bytes.Reason());
    messages = std::move(bytes.Value());
  }
  const Result<std::string> templateBytes = ReadTemplate(files, options.templateFile);
  if (!templateBytes) return Fail(templateBytes.Reason());
  const auto hive = OpenHive(files, folder, false);
  if (!hive) return Fail(hive.Reason());

  InstallLocale(ReadSystemLocale().formats);
  const QCoreApplication application(argc, argv);
  // Time stands still, at the moment asked for, and nothing is sent anywhere.
  SimulatedLoop loop;
  loop.SetWallClock(options.now ? *options.now : QtLoop().Now());
  SimulatedNetwork network(loop);
  DirectLineWriter journal(WriteToStandardError);
  ConsoleOperator person(journal);
  CsvCartStore carts(files, person, folder + "/Carts.csv");
  Environment environment{loop, *hive.Value(), files, network, person, carts, folder, ""};
  environment.settingsRoot = ChooseSettingsRoot(*hive.Value()).inUse;
  if (options.service > ReadNumberServices(*hive.Value(), environment.settingsRoot))
    return Fail("there is no service " + std::to_string(options.service));
  RunExpandCommand(environment, options, templateBytes.Value(), messages, std::cout, std::cerr);
  return std::cout ? 0 : Fail("cannot write to standard output");
}

int Run(int argc, char** argv) {
  const Result<CommandLine> read = ReadCommandLine({argv + 1, argv + argc});
  if (!read) return WrongUsage(read.Reason());
  const CommandLine& line = read.Value();
  if (line.showHelp) std::cout << kHelp << kSettingsUsage << kSendAndExpandHelp;
  if (line.showVersion) std::cout << "zebctl " << ZEB_VERSION << '\n';
  if (line.showHelp || line.showVersion) return 0;
  if (line.command == "send") return Send(ReadSendOptions(line.arguments), argc, argv);
  if (line.command == "set") return Send(ReadSetOptions(line.arguments), argc, argv);
  if (line.command != "settings" && line.command != "expand")
    return WrongUsage("there is no command '" + line.command + "'");
  const Result<std::string> folder = ChooseDataFolder(FindDataFolderPlaces(line.home));
  if (!folder) return Fail(folder.Reason());
  if (line.command == "settings") return Settings(line, folder.Value());
  return Expand(line, folder.Value(), argc, argv);
}

}  // namespace
}  // namespace zeb

int main(int argc, char** argv) {
  try {
    return zeb::Run(argc, argv);
  } catch (const std::exception& error) {
    return zeb::Fail(error.what());
  }
}
