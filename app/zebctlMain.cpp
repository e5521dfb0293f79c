// zebctl: the command-line companion: settings, stations, status, messages to a service, previews of
// templates, history.

#include <unistd.h>

#include <QCoreApplication>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <variant>

#include "app/ConsoleOperator.h"
#include "app/ExpandCommand.h"
#include "app/HistoryCommands.h"
#include "app/PublisherCommands.h"
#include "app/PublisherLink.h"
#include "app/SendCommand.h"
#include "app/SettingsCommands.h"
#include "app/StationCommands.h"
#include "app/SupportCommand.h"
#include "app/TestCommand.h"
#include "app/ZebctlOptions.h"
#include "core/CsvCartStore.h"
#include "core/SettingsPaths.h"
#include "dashboard/DashboardSettings.h"
#include "platform/DirectLineWriter.h"
#include "platform/common/LibzipFiles.h"
#include "platform/common/SodiumSecrets.h"
#include "platform/common/SqliteHistoryReader.h"
#include "platform/qt/QtLoop.h"
#include "platform/qt/QtNetwork.h"
#include "platform/simulated/MemoryHive.h"
#include "platform/simulated/SimulatedLoop.h"
#include "platform/simulated/SimulatedNetwork.h"
#include "platform/system/DataFolder.h"
#include "platform/system/LocalZone.h"
#include "platform/system/Process.h"
#include "platform/system/SettingsStore.h"
#include "platform/system/StandardError.h"
#include "platform/system/SystemLocale.h"
#include "platform/system/TerminalPassword.h"
#include "program/SystemPorts.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

int Fail(const std::string& reason) {
  std::cerr << "zebctl: " << reason << std::endl;
  return 1;
}

int WrongUsage(const std::string& reason) {
  std::cerr << "zebctl: " << reason << std::endl;
  return 2;
}

// Only what changes settings makes a settings file where there is none.
Result<std::unique_ptr<SettingsHive>> OpenHive(FileSystem& files, const std::string& folder, bool toChange) {
  if (!toChange && !HasSettings(folder)) return std::unique_ptr<SettingsHive>(std::make_unique<MemoryHive>());
  if (const Outcome made = files.CreateFolders(folder); !made) return made.AsFailure();
  Result<std::unique_ptr<StoredHive>> hive = OpenSettings(folder);
  if (!hive) return hive.AsFailure();
  return std::unique_ptr<SettingsHive>(std::move(hive.Value()));
}

int Settings(const SettingsOptions& options, const std::string& folder) {
  SystemFiles files;
  const auto hive = OpenHive(files, folder, options.MakesSettings());
  if (!hive) return Fail(hive.Reason());
  return RunSettingsCommand(*hive.Value(), files, options, std::cout, std::cerr);
}

bool ReadInput(std::string& bytes) {
  bytes.resize(64 * 1024);
  ssize_t count = 0;
  do count = ::read(STDIN_FILENO, bytes.data(), static_cast<unsigned>(bytes.size()));
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

int Send(const SendOptions& options, int argc, char** argv) {
  QtLoop::ChoosePlainDispatcher();
  const QCoreApplication application(argc, argv);
  UseEnglishSystemMessages();
  QtLoop loop;
  QtNetwork network(loop);
  RunSendCommand(loop, network, options, ReadInput, std::cerr, EndAtOnce);
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

int Expand(const ExpandOptions& options, const std::string& folder, int argc, char** argv) {
  SystemFiles files;
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
  UseEnglishSystemMessages();
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
  const Outcome expanded =
      RunExpandCommand(environment, options, templateBytes.Value(), messages, std::cout, std::cerr);
  if (!expanded) return Fail(expanded.Reason());
  return std::cout ? 0 : Fail("cannot write to standard output");
}

Result<std::string> ReadNewPassword() {
  if (!CanAskForPassword()) {
    std::string line;
    std::getline(std::cin, line);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
  }
  Result<std::string> first = AskForPassword("New password: ");
  if (!first) return first;
  Result<std::string> second = AskForPassword("Again: ");
  if (!second) return second;
  if (first.Value() != second.Value()) return Failure{"the two are not the same; nothing is changed"};
  return first;
}

Outcome StorePassword(const std::string& folder) {
  const Result<std::string> password = ReadNewPassword();
  if (!password) return password;
  if (password.Value().empty()) return Failure{"an empty password is none; nothing is changed"};
  if (password.Value().size() > kMostPasswordBytes) return Failure{"the password is longer than 1024 bytes"};
  const auto secrets = SodiumSecrets::Make();
  if (!secrets) return secrets;
  const Result<std::string> hash = secrets.Value()->HashPassword(password.Value());
  if (!hash) return hash;
  SystemFiles files;
  const auto hive = OpenHive(files, folder, true);
  if (!hive) return hive;
  hive.Value()->WriteText(ChooseSettingsRoot(*hive.Value()).inUse, kDashboardPassword, hash.Value());
  return {};
}

int StoreStations(const StationOptions& options, const std::string& folder) {
  SystemFiles files;
  const auto hive = OpenHive(files, folder, options.Changes());
  if (!hive) return Fail(hive.Reason());
  SimulatedLoop loop;
  SimulatedNetwork network(loop);
  DirectLineWriter journal(WriteToStandardError);
  ConsoleOperator person(journal);
  CsvCartStore carts(files, person, folder + "/Carts.csv");
  Environment environment{loop, *hive.Value(), files, network, person, carts, folder, ""};
  environment.settingsRoot = ChooseSettingsRoot(*hive.Value()).inUse;
  const Outcome done = RunStationCommand(environment, options, std::cout);
  if (!done) return Fail(done.Reason());
  std::cout.flush();
  return std::cout ? 0 : Fail("cannot write to standard output");
}

// The settings are stored; a publisher that runs is to take them.
int TellPublisher(const CommandPorts& ports) {
  const PublisherLink::Reply reply = PublisherLink(ports.loop, ports.sockets, ports.folder).Reload();
  if (!reply.Done() && !reply.notRunning)
    ports.err << "zebctl: stored, but zebd has not been told: " << reply.problem << std::endl;
  return 0;
}

int ChangeStations(const CommandPorts& ports, const StationOptions& options) {
  if (options.action == StationOptions::Action::kRemoveService) {
    const PublisherLink::Reply reply =
        PublisherLink(ports.loop, ports.sockets, ports.folder).RemoveService(options.service);
    if (reply.Done()) return 0;
    if (!reply.notRunning) return Fail(reply.problem);
  }
  const int status = StoreStations(options, ports.folder);
  return status == 0 && options.Changes() ? TellPublisher(ports) : status;
}

int SetPassword(const CommandPorts& ports) {
  const Outcome stored = StorePassword(ports.folder);
  return stored ? TellPublisher(ports) : Fail(stored.Reason());
}

// Without a publisher the test is this program's own. It ends the program: a step that hangs in the system
// must not be waited for.
[[noreturn]] void TestAlone(const CommandPorts& ports, QtLoop& loop, QtNetwork& network,
                            const TestOptions& options) {
  SystemFiles files;
  const auto hive = OpenHive(files, ports.folder, false);
  if (!hive) EndAtOnce(Fail(hive.Reason()));
  DirectLineWriter journal(WriteToStandardError);
  ConsoleOperator person(journal);
  CsvCartStore carts(files, person, ports.folder + "/Carts.csv");
  SystemFtpSessions ftp;
  SystemSerialPorts serialPorts(loop, network);
  Environment environment{loop, *hive.Value(), files, network, person, carts, ports.folder, ""};
  environment.settingsRoot = ChooseSettingsRoot(*hive.Value()).inUse;
  environment.ftp = &ftp;
  environment.serialPorts = &serialPorts;
  const std::string authorities = hive.Value()->ReadText(environment.settingsRoot, "TrustedCaFile", "");
  if (!authorities.empty())
    if (const Outcome added = network.AddCaFile(JoinPath(ports.folder, authorities)); !added)
      Fail(added.Reason());
  EndAtOnce(TellTest(ports, TestStoredOutput(environment, options)));
}

int Support(const CommandPorts& ports, const SupportOptions& options) {
  SystemFiles files;
  const auto hive = OpenHive(files, ports.folder, false);
  if (!hive) return Fail(hive.Reason());
  DirectLineWriter journal(WriteToStandardError);
  ConsoleOperator person(journal);
  CsvCartStore carts(files, person, ports.folder + "/Carts.csv");
  LibzipFiles zips;
  Environment environment{ports.loop, *hive.Value(), files, ports.network, person, carts, ports.folder, ""};
  environment.settingsRoot = ChooseSettingsRoot(*hive.Value()).inUse;
  environment.zips = &zips;
  return RunSupportCommand(ports, environment, options);
}

// Standard input and output. Passwords are asked for without showing them.
class TerminalTalk final : public SetupTalk {
 public:
  bool CanAsk() const override { return CanAskForPassword(); }
  void Say(const std::string& line) override { std::cout << line << std::endl; }
  void Complain(const std::string& line) override { Fail(line); }
  std::optional<std::string> Ask(const std::string& question, bool secret) override {
    if (secret) {
      Result<std::string> answer = AskForPassword(question);
      return answer ? std::optional(std::move(answer.Value())) : std::nullopt;
    }
    std::cout << question << std::flush;
    std::string line;
    if (!std::getline(std::cin, line)) return std::nullopt;
    return DecodeLenient(line);
  }
};

// Where the examples are: beside the program where it was built, else where they are installed.
std::string ExamplesFolder(FileSystem& files) {
  const std::string program = QCoreApplication::applicationDirPath().toStdString();
  for (const char* place : {"/examples", "/../share/zeb/examples"})
    if (files.Stat(program + place + "/now-playing-page/now.html")) return program + place;
  return "";
}

// In a task. What is tried works on a hive in memory.
int SetUp(const CommandPorts& ports, QtLoop& loop, QtNetwork& network, const SetupOptions& options) {
  SystemFiles files;
  // What root stores there its user could not read.
  if (WouldLockOwnerOut(ports.folder))
    return Fail("the data folder '" + ports.folder + "' is another user's: run this as that user, " +
                "for instance sudo -u zeb zebctl setup");
  const auto hive = OpenHive(files, ports.folder, true);
  if (!hive) return Fail(hive.Reason());
  DirectLineWriter journal(WriteToStandardError);
  ConsoleOperator person(journal);
  CsvCartStore carts(files, person, ports.folder + "/Carts.csv");
  SystemFtpSessions ftp;
  SystemSerialPorts serialPorts(loop, network);
  MemoryHive memory;
  Environment stored{loop, *hive.Value(), files, network, person, carts, ports.folder, ""};
  stored.settingsRoot = ChooseSettingsRoot(*hive.Value()).profile;
  Environment draft{loop, memory, files, network, person, carts, ports.folder, stored.settingsRoot};
  draft.ftp = &ftp;
  draft.serialPorts = &serialPorts;
  TerminalTalk talk;
  const auto tell = [&]() -> std::string {
    const PublisherLink::Reply reply = PublisherLink(ports.loop, ports.sockets, ports.folder).Reload();
    if (reply.Done()) return "The zebd that runs has taken it.";
    if (reply.notRunning)
      return "No zebd runs on '" + ports.folder + "': start it, and the station is there.";
    return "The zebd that runs has not been told: " + reply.problem;
  };
  return RunSetup({stored, draft, ExamplesFolder(files), tell}, options, talk);
}

// In a task.
void RunPublisherCommand(const CommandPorts& ports, QtLoop& loop, QtNetwork& network,
                         const PublisherOptions& options) {
  if (const auto* byHand = std::get_if<ByHandOptions>(&options))
    return RunByHandCommand(ports, *byHand, EndAtOnce);
  int status = 1;
  try {
    if (const auto* what = std::get_if<StatusOptions>(&options)) status = RunStatusCommand(ports, *what);
    if (const auto* what = std::get_if<UpdateOptions>(&options)) status = RunUpdateCommand(ports, *what);
    if (std::holds_alternative<ReloadOptions>(options)) status = RunReloadCommand(ports);
    if (const auto* what = std::get_if<StationOptions>(&options)) status = ChangeStations(ports, *what);
    if (const auto* what = std::get_if<SupportOptions>(&options)) status = Support(ports, *what);
    if (std::holds_alternative<PasswordOptions>(options)) status = SetPassword(ports);
    if (const auto* what = std::get_if<SetupOptions>(&options)) status = SetUp(ports, loop, network, *what);
    if (const auto* what = std::get_if<TestOptions>(&options)) {
      const auto asked = AskForTest(ports, *what);
      if (!asked) TestAlone(ports, loop, network, *what);
      status = TellTest(ports, *asked);
    }
  } catch (const std::exception& error) {
    status = Fail(error.what());
  }
  EndAtOnce(status);
}

int Publisher(const PublisherOptions& options, const std::string& folder, int argc, char** argv) {
  QtLoop::ChoosePlainDispatcher();
  const QCoreApplication application(argc, argv);
  UseEnglishSystemMessages();
  QtLoop loop;
  QtNetwork network(loop);
  SystemLocalSockets sockets(loop);
  const CommandPorts ports{loop, sockets, network, folder, StandardOutputIsTerminal(), std::cout, std::cerr};
  loop.Start("command", [&] { RunPublisherCommand(ports, loop, network, options); });
  return loop.Run();
}

int History(const HistoryOptions& options, const std::string& folder) {
  SystemFiles files;
  std::string templateBytes;
  if (options.action == HistoryOptions::Action::kReplay) {
    Result<std::string> bytes = ReadTemplate(files, options.templateFile);
    if (!bytes) return Fail(bytes.Reason());
    templateBytes = std::move(bytes.Value());
  }
  const auto reader = SqliteHistoryReader::Open(folder + "/history.db");
  if (!reader) return Fail(reader.Reason());
  InstallLocale(ReadSystemLocale().formats);
  return RunHistoryCommand(*reader.Value(), options, templateBytes, UtcOffsetAt, std::cout, std::cerr);
}

int Run(int argc, char** argv) {
  UsePlainStreams();
  const Result<ZebctlOptions> read = ReadZebctlOptions(ProgramArguments(argc, argv));
  if (!read) return WrongUsage(read.Reason());
  const ZebctlOptions& options = read.Value();
  if (!options.textToShow.empty()) {
    std::cout << options.textToShow << std::flush;
    return std::cout ? 0 : Fail("cannot write to standard output");
  }
  if (const auto* send = std::get_if<SendOptions>(&options.command)) return Send(*send, argc, argv);
  if (const auto* lint = std::get_if<LintOptions>(&options.command)) {
    SystemFiles files;
    return RunLintCommand(files, *lint, std::cout, std::cerr);
  }
  const Result<std::string> folder = ChooseDataFolder(FindDataFolderPlaces(options.home));
  if (!folder) return Fail(folder.Reason());
  if (const auto* publisher = std::get_if<PublisherOptions>(&options.command))
    return Publisher(*publisher, folder.Value(), argc, argv);
  if (const auto* settings = std::get_if<SettingsOptions>(&options.command))
    return Settings(*settings, folder.Value());
  if (const auto* history = std::get_if<HistoryOptions>(&options.command))
    return History(*history, folder.Value());
  return Expand(std::get<ExpandOptions>(options.command), folder.Value(), argc, argv);
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
