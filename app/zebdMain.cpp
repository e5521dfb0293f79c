// zebd: the publisher without windows, for systemd, containers and shells.

#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>

#include "app/ConsoleOperator.h"
#include "app/ControlRoom.h"
#include "app/StartUpOptions.h"
#include "app/frmMain.h"
#include "core/CsvCartStore.h"
#include "dashboard/JournalTail.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/OutputTable.h"
#include "platform/ThreadedLineWriter.h"
#include "platform/posix/CurlFtpSession.h"
#include "platform/posix/DataFolder.h"
#include "platform/posix/DescriptorLimit.h"
#include "platform/posix/LibxmlMarkup.h"
#include "platform/posix/LocalZone.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixProcesses.h"
#include "platform/posix/ServiceManager.h"
#include "platform/posix/SingleInstance.h"
#include "platform/posix/SodiumSecrets.h"
#include "platform/posix/SqliteHistory.h"
#include "platform/posix/SqliteHistoryReader.h"
#include "platform/posix/SqliteHive.h"
#include "platform/posix/StandardError.h"
#include "platform/posix/SystemLocale.h"
#include "platform/qt/QtLocalSockets.h"
#include "platform/qt/QtLoop.h"
#include "platform/qt/QtMessages.h"
#include "platform/qt/QtNetwork.h"
#include "platform/qt/QtSerialPortControl.h"
#include "platform/qt/QtSignals.h"
#include "text/LetterCase.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

constexpr int kCannotStart = 1;
constexpr int kAlreadyRunning = 3;
// Whatever hangs, the program is gone within five seconds. Services close within four.
// How long the running loop may wait for a store that somebody else has locked.
constexpr std::chrono::milliseconds kStorePatience(100);
constexpr Duration kQuitLimit = std::chrono::milliseconds(4300);

// Where the journal is a file, its lines may come so much later.
constexpr std::chrono::milliseconds kGatherJournal(50);

// Debug lines come in bursts, with each item a hundred or more.
constexpr std::size_t kMostDebugBytes = 4 * ThreadedLineWriter::kMostWaiting;

constexpr char kHelp[] =
    "zebd: publishes a radio station's now-playing information\n"
    "\n"
    "  zebd [--home DIR] [options]\n"
    "\n"
    "  --home DIR            the data folder (else $ZEB_HOME, /var/lib/zeb, ~/.local/share/zeb)\n"
    "  --version, --help\n"
    "  /IMPORT=FILE          import a .reg file before the services are loaded\n"
    "  /DEBUG[=WORD]         debug log, also on standard error: NORMAL, MEDIUM, MAX, FULL, NONE, OFF\n"
    "  /PRESERVETEMPFILES    keep the outputs' temporary files\n"
    "  /NOPREVCHECK          do not check whether another zebd runs on the data folder\n"
    "  /SILENT, /SCHEDULE, /MINIMISED   for the desktop program; taken and without effect here\n"
    "\n"
    "SIGHUP reads the settings again; SIGTERM and SIGINT end zebd within five seconds, a "
    "second\n"
    "one at once. Exit status: 0 ended on request, 1 cannot start, 3 another zebd runs on the data folder.\n";

int Fail(LineWriter& journal, const std::string& reason) {
  journal.Write({"", "", "zebd: " + reason});
  return kCannotStart;
}

// Everything that runs, in the order in which it is made.
class Publisher {
 public:
  Publisher(ThreadedLineWriter& journal, StartUpOptions options, std::string programName, std::string folder)
      : journal_(journal),
        options_(std::move(options)),
        programName_(std::move(programName)),
        folder_(std::move(folder)) {}

  int Run() {
    loop_.OnTaskFailure([this](const std::string& task, const std::string& what) {
      person_.Note("Internal error in " + task + ": " + what);
      ReportError("in " + task, what, 0, Report::kQuietly);
    });
    if (const Outcome made = files_.CreateFolders(folder_); !made) return Fail(journal_, made.Reason());
    Result<std::unique_ptr<SingleInstance>> instance = SingleInstance::Claim(folder_);
    if (!instance) return Fail(journal_, instance.Reason());
    const bool alreadyRunning = instance.Value() == nullptr && !options_.noPreviousCheck;
    // A second instance reads the settings for its debug level only, and moves no damaged file of the first.
    const std::string path = folder_ + "/settings.db";
    Result<std::unique_ptr<SqliteHive>> hive =
        alreadyRunning ? SqliteHive::Open(path) : SqliteHive::OpenOrSetAside(path);
    if (hive) StartDebugLog(*hive.Value());
    if (alreadyRunning) return ExitAsAlreadyRunning();
    if (!hive) return Fail(journal_, hive.Reason());
    return Publish(*hive.Value());
  }

 private:
  // Nothing is destroyed: a worker thread may hang in a call to the system, and must not be waited for.
  // Settings are on the disk already, the lock on the data folder goes with the process. Log and journal get
  // a moment for what still waits to be written.
  [[noreturn]] void EndAtOnce(int status) {
    if (room_ != nullptr) room_->Close();
    log_.reset();
    journal_.Flush(ThreadedLineWriter::kGrace);
    std::_Exit(status);
  }

  void StartDebugLog(SettingsHive& hive) {
    const bool onCommandLine = FindIgnoringAsciiCase(options_.commandLine, "/DEBUG") != std::string::npos;
    log_ = std::make_unique<DebugLog>(
        loop_, files_, person_, programName_, DebugLog::StartUpFolder(hive, folder_),
        DebugLog::StartUpLevel(options_.commandLine, hive), onCommandLine, [](LineSink sink) {
          return std::make_unique<ThreadedLineWriter>(
              std::move(sink), ThreadedLineWriter::Options{.mostWaiting = kMostDebugBytes});
        });
    log_->Install();
    WriteDebugLine("Started InitialiseTool", 5, LineKind::kStarted);
    if (!options_.noPreviousCheck) WriteDebugLine("Check if already running");
  }

  int ExitAsAlreadyRunning() {
    WriteDebugLine("Exit as App already running");
    Fail(journal_, "another zebd runs on the data folder '" + folder_ + "'");
    return kAlreadyRunning;
  }

  int Publish(SqliteHive& hive) {
    WriteDebugLine("Read StartupOptions");
    const SystemLocale locale = ReadSystemLocale();
    InstallLocale(locale.formats);
    if (!locale.problem.empty()) person_.Note(locale.problem);
    WriteDebugLine("Initialising Tool");
    WriteDebugLine("Finished InitialiseTool", 5, LineKind::kFinished);

    CsvCartStore carts(files_, person_, folder_ + "/Carts.csv");
    Environment environment{loop_, hive, files_, network_, person_, carts, folder_, ""};
    environment.serialPorts = &serialPorts_;
    environment.markup = &markup_;
    environment.ftp = &ftp_;
    environment.processes = &processes_;
    const std::string historyPath = folder_ + "/history.db";
    frmMain main(environment, MakeOutputFactory(environment), options_,
                 std::make_shared<SqliteHistory>(historyPath));
    main_ = &main;
    const UnixSignals unixSignals(loop_, [this](int signal) { OnSignal(signal); });
    if (const Outcome loaded = main.Load(); !loaded) EndAtOnce(Fail(journal_, loaded.Reason()));
    TrustCaFile(environment);
    hive.SetPatience(kStorePatience);
    ControlRoom room(
        environment, localSockets_, MakeSecrets(), main, person_,
        [path = historyPath] { return SqliteHistoryReader::Open(path); }, UtcOffsetAt);
    room_ = &room;
    room.Open();
    const int count = main.NumberServices();
    person_.Note("ZEB " ZEB_VERSION " is ready: " + std::to_string(count) +
                 (count == 1 ? " service" : " services") + ", data folder '" + folder_ + "'");
    NotifyServiceManager("READY=1");
    if (const auto interval = WatchdogInterval(); interval.count() > 0)
      watchdog_ = loop_.Every(interval / 2, [] { NotifyServiceManager("WATCHDOG=1"); });
    EndAtOnce(loop_.Run());
  }

  std::shared_ptr<Secrets> MakeSecrets() {
    const Result<std::shared_ptr<Secrets>> secrets = SodiumSecrets::Make();
    if (secrets) return secrets.Value();
    person_.Note("Nobody can log on to the dashboard: " + secrets.Reason());
    return nullptr;
  }

  // Stations whose servers have certificates of their own making.
  void TrustCaFile(const Environment& environment) {
    const std::string path = environment.hive.ReadText(environment.settingsRoot, "TrustedCaFile", "");
    if (path.empty()) return;
    if (const Outcome added = network_.AddCaFile(JoinPath(folder_, path)); !added)
      person_.Note(added.Reason());
  }

  void OnSignal(int signal) {
    if (signal == SIGHUP) return room_ != nullptr ? room_->Reload() : main_->Reload();
    if (stopping_) {
      person_.Note("Ending at once");
      EndAtOnce(1);
    }
    stopping_ = true;
    NotifyServiceManager("STOPPING=1");
    person_.Note(signal == SIGINT ? "Stopping (interrupted)" : "Stopping");
    quitLimit_ = loop_.After(kQuitLimit, [this] {
      const std::string updating = main_->UpdatingServices();
      person_.Note("Stopped without waiting longer for the " +
                   (updating.empty() ? "history" : "outputs of: " + updating));
      EndAtOnce(0);
    });
    main_->Quit([this] {
      person_.Note("Stopped");
      EndAtOnce(0);
    });
  }

  ThreadedLineWriter& journal_;
  StartUpOptions options_;
  std::string programName_;
  std::string folder_;
  QtLoop loop_;
  QtNetwork network_{loop_};
  QtSerialPorts serialPorts_{loop_, network_};
  PosixFiles files_{folder_};
  LibxmlMarkup markup_;
  CurlFtpSessions ftp_;
  PosixProcesses processes_;
  QtLocalSockets localSockets_{loop_};
  ConsoleOperator console_{journal_, isatty(STDERR_FILENO) != 0 ? &loop_ : nullptr};
  JournalTail person_{console_, loop_};
  std::unique_ptr<DebugLog> log_;
  frmMain* main_ = nullptr;
  ControlRoom* room_ = nullptr;
  bool stopping_ = false;
  Timer quitLimit_;
  Timer watchdog_;
};

int Run(ThreadedLineWriter& journal, int argc, char** argv) {
  Result<StartUpOptions> options = ReadStartUpOptions({argv + 1, argv + argc});
  if (!options) return Fail(journal, options.Reason() + " (zebd --help)");
  if (options.Value().showHelp)
    std::cout << kHelp;
  else if (options.Value().showVersion)
    std::cout << "zebd " << ZEB_VERSION << '\n';
  if (options.Value().showHelp || options.Value().showVersion) return 0;
  const Result<std::string> folder = ChooseDataFolder(FindDataFolderPlaces(options.Value().home));
  if (!folder) return Fail(journal, folder.Reason());

  std::signal(SIGPIPE, SIG_IGN);  // a journal or server that went away is no reason to end
  RaiseDescriptorLimit();
  SendQtMessagesTo(journal);
  QtLoop::ChoosePlainDispatcher();
  const QCoreApplication application(argc, argv);
  Publisher publisher(journal, std::move(options.Value()), std::string(FileNamePart(argv[0])),
                      folder.Value());
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
