// zebctl: the command-line companion: settings, messages to a service, previews of templates, history.

#include <unistd.h>

#include <QCoreApplication>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <variant>

#include "app/ConsoleOperator.h"
#include "app/ExpandCommand.h"
#include "app/HistoryCommands.h"
#include "app/SendCommand.h"
#include "app/SettingsCommands.h"
#include "app/ZebctlOptions.h"
#include "core/CsvCartStore.h"
#include "core/SettingsPaths.h"
#include "platform/DirectLineWriter.h"
#include "platform/posix/DataFolder.h"
#include "platform/posix/LocalZone.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/SqliteHistoryReader.h"
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
  const std::string path = folder + "/settings.db";
  if (!toChange && !files.Stat(path)) return std::unique_ptr<SettingsHive>(std::make_unique<MemoryHive>());
  if (const Outcome made = files.CreateFolders(folder); !made) return made.AsFailure();
  Result<std::unique_ptr<SqliteHive>> hive = SqliteHive::Open(path);
  if (!hive) return hive.AsFailure();
  return std::unique_ptr<SettingsHive>(std::move(hive.Value()));
}

int Settings(const SettingsOptions& options, const std::string& folder) {
  PosixFiles files;
  const auto hive = OpenHive(files, folder, options.MakesSettings());
  if (!hive) return Fail(hive.Reason());
  return RunSettingsCommand(*hive.Value(), files, options, std::cout, std::cerr);
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

int Send(const SendOptions& options, int argc, char** argv) {
  QtLoop::ChoosePlainDispatcher();
  const QCoreApplication application(argc, argv);
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
  const Outcome expanded =
      RunExpandCommand(environment, options, templateBytes.Value(), messages, std::cout, std::cerr);
  if (!expanded) return Fail(expanded.Reason());
  return std::cout ? 0 : Fail("cannot write to standard output");
}

int History(const HistoryOptions& options, const std::string& folder) {
  PosixFiles files;
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
  const Result<ZebctlOptions> read = ReadZebctlOptions({argv + 1, argv + argc});
  if (!read) return WrongUsage(read.Reason());
  const ZebctlOptions& options = read.Value();
  if (!options.textToShow.empty()) {
    std::cout << options.textToShow << std::flush;
    return std::cout ? 0 : Fail("cannot write to standard output");
  }
  if (const auto* send = std::get_if<SendOptions>(&options.command)) return Send(*send, argc, argv);
  const Result<std::string> folder = ChooseDataFolder(FindDataFolderPlaces(options.home));
  if (!folder) return Fail(folder.Reason());
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
