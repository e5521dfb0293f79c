// zeb: the operator's desktop program: the publisher with windows.

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QUrl>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/StartUpOptions.h"
#include "app/desktop/DesktopMain.h"
#include "platform/ThreadedLineWriter.h"
#ifdef _WIN32
#include "platform/windows/WinPower.h"
#else
#include "platform/dbus/DBusPower.h"
#endif
#include "platform/system/DataFolder.h"
#include "platform/system/Process.h"
#include "platform/system/StandardError.h"
#include "platform/system/SystemLocale.h"
#include "program/Publisher.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr std::chrono::milliseconds kGatherJournal(50);

constexpr char kHelp[] =
    "zeb: publishes a radio station's now-playing information, with windows\n"
    "\n"
    "  zeb [--home DIR] [options]\n"
    "\n"
    "  --home DIR            the data folder (else " ZEB_USUAL_DATA_FOLDERS
    ")\n"
    "  --version, --help\n"
    "  /MINIMISED            starts minimised\n"
    "  /SILENT               no splash and no message boxes: they are lines in the journal\n"
    "  /SCHEDULE             /SILENT and /MINIMISED, for unattended starts\n"
    "  /IMPORT=FILE          import a .reg file before the services are loaded\n"
    "  /DEBUG[=WORD]         debug log: NORMAL, MEDIUM, MAX, FULL, NONE, OFF\n"
    "  /PRESERVETEMPFILES    keep the outputs' temporary files\n"
    "  /NOPREVCHECK          do not check whether another publisher runs on the data folder\n"
    "\n"
    "The journal is on standard error. SIGHUP reads the settings again; SIGTERM, SIGINT and the end of the\n"
    "session end zeb without a question. A second start brings the first one's window to the front.\n"
    "Exit status: 0 ended, 1 cannot start, 3 another publisher runs on the data folder.\n";

int Fail(LineWriter& journal, const std::string& reason) {
  journal.Write({"", "", "zeb: " + reason});
  return kCannotStart;
}

// Takes "--screenshots DIR" out of the arguments; for who writes the manual.
std::string TakeScreenshotFolder(std::vector<std::string>& arguments) {
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i)
    if (arguments[i] == "--screenshots") {
      std::string folder = arguments[i + 1];
      arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(i),
                      arguments.begin() + static_cast<std::ptrdiff_t>(i) + 2);
      return folder;
    }
  return "";
}

#ifdef _WIN32
bool HasScreen() {
  return true;
}
constexpr char kManualFolder[] = "/manual";

std::unique_ptr<PowerRequest> MakePowerRequest(EventLoop&) {
  return std::make_unique<WinPower>();
}
#else
// Qt would end the process with a signal.
bool HasScreen() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    if (const char* value = std::getenv(name); value != nullptr && *value != '\0') return true;
  return false;
}

constexpr char kManualFolder[] = "/../share/doc/zeb/manual";

std::unique_ptr<PowerRequest> MakePowerRequest(EventLoop& loop) {
  return std::make_unique<DBusPower>(loop);
}
#endif

// Beside the program as it is installed; "" where it is not.
std::string ManualFolder() {
  const QDir folder(QApplication::applicationDirPath() + kManualFolder);
  return folder.exists() ? QDir::cleanPath(folder.path()).toStdString() : "";
}

Desk DeskOf(const Publisher::Engine& engine, Boxes& boxes) {
  return {engine.environment, engine.main, engine.makeOutput, boxes, engine.journal, engine.openHistory};
}

void OpenPage(const std::string& url) {
  QDesktopServices::openUrl(QUrl(QString::fromStdString(url)));
}

int Publish(ThreadedLineWriter& journal, const std::string& name, StartUpOptions options,
            DesktopMain::Start start) {
  Publisher* running = nullptr;
  DesktopMain desktop(std::move(start), {.ended = [&] { running->End(); },
                                         .stop = [&](const std::string& why) { running->Stop(why); }});
  std::unique_ptr<PowerRequest> power;
  const std::string folder = desktop.Folder();
  Publisher publisher(
      journal, {"zeb", name, std::move(options), folder},
      {.person = [&](Operator& console, EventLoop& loop) { return desktop.Person(console, loop); },
       .loading =
           [&](const Publisher::Engine& engine) {
             desktop.Loading(DeskOf(engine, desktop.MessageBoxes()));
             if (!engine.environment.publishes) return;
             power = MakePowerRequest(engine.environment.loop);
             power->StayAwake("publishes what is on air", [&engine](const std::string& reason) {
               engine.journal.Note("The computer may fall asleep: " + reason);
             });
           },
       .opening = [&](ControlRoom& room) { desktop.AddRequests(room); },
       .ready = [&](frmMain&, ControlRoom&) { desktop.Ready(); },
       .alreadyRunning =
           [&](SettingsHive* hive, LocalSockets& sockets, const Publisher::Front::Answered& answered) {
             desktop.AlreadyRunning({running->Loop(), sockets, hive, OpenPage}, [answered](bool edit) {
               answered(edit ? Publisher::Front::Beside::kEdit : Publisher::Front::Beside::kEnd);
             });
           },
       .editing = [&](frmMain&) { desktop.Ready(); },
       .told = [&](RunningElsewhere::Told told,
                   const std::string& reason) { desktop.ToldElsewhere(told, reason); },
       .stopping = [&] { desktop.Stopping(); }});
  running = &publisher;
  return publisher.Run();
}

int Run(ThreadedLineWriter& journal, int argc, char** argv) {
  std::vector<std::string> arguments = ProgramArguments(argc, argv);
  std::string screenshots = TakeScreenshotFolder(arguments);
  Result<StartUpOptions> options = ReadStartUpOptions(arguments);
  if (!options) return Fail(journal, options.Reason() + " (zeb --help)");
  const StartUpOptions& given = options.Value();
  if (given.showHelp)
    std::cout << kHelp;
  else if (given.showVersion)
    std::cout << "zeb " << ZEB_VERSION << '\n';
  if (given.showHelp || given.showVersion) return 0;
  const Result<std::string> folder = ChooseDataFolder(FindDataFolderPlaces(given.home));
  if (!folder) return Fail(journal, folder.Reason());
  if (!HasScreen())
    return Fail(journal, "there is no screen (DISPLAY is not set); zebd publishes without one");

  PrepareProcess(journal, Windows::kSome);
  int count = 1;  // the options are ours, not Qt's
  const QApplication application(count, argv);
  UseEnglishSystemMessages();
  DesktopMain::Start start{given.silent, given.minimised, folder.Value(), ManualFolder(), screenshots};
  return Publish(journal, std::string(FileNamePart(argv[0])), std::move(options.Value()), std::move(start));
}

}  // namespace
}  // namespace zeb

int main(int argc, char** argv) {
  zeb::ThreadedLineWriter journal(zeb::WriteToStandardError,
                                  {.atOnce = zeb::TryStandardError(), .gather = zeb::kGatherJournal});
  try {
    return zeb::Run(journal, argc, argv);
  } catch (const std::exception& error) {
    return zeb::Fail(journal, error.what());
  }
}
