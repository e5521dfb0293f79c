// zebd: the publisher without windows, for systemd, containers and shells.

#include <QCoreApplication>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "app/StartUpOptions.h"
#include "platform/ThreadedLineWriter.h"
#include "platform/system/DataFolder.h"
#include "platform/system/Process.h"
#include "platform/system/ServiceManager.h"
#include "platform/system/StandardError.h"
#include "platform/system/SystemLocale.h"
#include "program/Publisher.h"
#include "text/Paths.h"

namespace zeb {
namespace {

// Where the journal is a file, its lines may come so much later.
constexpr std::chrono::milliseconds kGatherJournal(50);

constexpr char kHelp[] =
    "zebd: publishes a radio station's now-playing information\n"
    "\n"
    "  zebd [--home DIR] [options]\n"
    "\n"
    "  --home DIR            the data folder (else " ZEB_USUAL_DATA_FOLDERS
    ")\n"
    "  --version, --help\n"
    "  /IMPORT=FILE          import a .reg file before the services are loaded\n"
    "  /DEBUG[=WORD]         debug log, also on standard error: NORMAL, MEDIUM, MAX, FULL, NONE, OFF\n"
    "  /PRESERVETEMPFILES    keep the outputs' temporary files\n"
    "  /NOPREVCHECK          do not check whether another zebd runs on the data folder\n"
    "  /SILENT, /SCHEDULE, /MINIMISED   for the desktop program; taken and without effect here\n"
    "\n"
#ifdef _WIN32
    "  --install-service     has Windows start zebd with the machine, with the options that follow; asks an\n"
    "                        administrator's rights\n"
    "  --remove-service      takes that back\n"
    "  --open-to-users       lets every user of this computer change settings and data folder, as zeb needs "
    "it;\n"
    "                        asks an administrator's rights\n"
    "\n"
    "Ctrl+C ends zebd within five seconds, a second one at once. Exit status: 0 ended on request,\n"
    "1 cannot start, 3 another zebd runs on the data folder.\n";
#else
    "SIGHUP reads the settings again; SIGTERM and SIGINT end zebd within five seconds, a "
    "second\n"
    "one at once. Exit status: 0 ended on request, 1 cannot start, 3 another zebd runs on the data folder.\n";
#endif

int Fail(LineWriter& journal, const std::string& reason) {
  journal.Write({"", "", "zebd: " + reason});
  return kCannotStart;
}

// That the publisher is ready, and then, where it is asked for, that the loop goes round.
Timer TellServiceManager(EventLoop& loop) {
  NotifyServiceManager("READY=1");
  const auto interval = WatchdogInterval();
  if (interval.count() <= 0) return {};
  return loop.Every(interval / 2, [] { NotifyServiceManager("WATCHDOG=1"); });
}

int Run(ThreadedLineWriter& journal, int argc, char** argv) {
  UsePlainStreams();
  std::vector<std::string> arguments = ProgramArguments(argc, argv);
  const auto stop = [] { return TellProgram(ProgramSignal::kStop); };
  if (const auto status = DoServiceCommand("zebd", arguments, stop, std::cout, std::cerr)) return *status;
  Result<StartUpOptions> options = ReadStartUpOptions(arguments);
  if (!options) return Fail(journal, options.Reason() + " (zebd --help)");
  if (options.Value().showHelp)
    std::cout << kHelp;
  else if (options.Value().showVersion)
    std::cout << "zebd " << ZEB_VERSION << '\n';
  if (options.Value().showHelp || options.Value().showVersion) return 0;
  const Result<std::string> folder = ChooseDataFolder(FindDataFolderPlaces(options.Value().home));
  if (!folder) return Fail(journal, folder.Reason());

  PrepareProcess(journal);
  const QCoreApplication application(argc, argv);
  UseEnglishSystemMessages();
  Timer watchdog;
  Publisher publisher(
      journal, {"zebd", std::string(FileNamePart(argv[0])), std::move(options.Value()), folder.Value()},
      {.person = {},
       .loading = {},
       .opening = {},
       .ready = [&](frmMain&, ControlRoom&) { watchdog = TellServiceManager(publisher.Loop()); },
       .alreadyRunning = {},
       .stopping = [] { NotifyServiceManager("STOPPING=1"); }});
  return publisher.Run();
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
