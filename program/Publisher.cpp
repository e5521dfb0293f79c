#include "program/Publisher.h"

#include <cstdlib>
#include <utility>

#include "core/CsvCartStore.h"
#include "outputs/OutputTable.h"
#include "platform/common/SodiumSecrets.h"
#include "platform/common/SqliteHistory.h"
#include "platform/common/SqliteHistoryReader.h"
#include "platform/qt/QtMessages.h"
#include "platform/system/LocalZone.h"
#include "platform/system/Process.h"
#include "platform/system/ServiceManager.h"
#include "platform/system/SettingsStore.h"
#include "platform/system/SingleInstance.h"
#include "platform/system/SystemLocale.h"
#include "text/LetterCase.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

// Whatever hangs, the program is gone within five seconds. Services close within four.
constexpr Duration kQuitLimit = std::chrono::milliseconds(4300);
// How long the running loop may wait for a store that somebody else has locked.
constexpr std::chrono::milliseconds kStorePatience(100);
// Debug lines come in bursts, with each item a hundred or more.
constexpr std::size_t kMostDebugBytes = 4 * ThreadedLineWriter::kMostWaiting;

}  // namespace

void PrepareProcess(LineWriter& journal, Windows windows) {
  PrepareSystem();
  SendQtMessagesTo(journal);
  if (windows == Windows::kSome)
    QtLoop::ChooseWindowDispatcher();
  else
    QtLoop::ChoosePlainDispatcher();
}

Publisher::Publisher(ThreadedLineWriter& journal, Program program, Front front)
    : journal_(journal),
      program_(std::move(program)),
      front_(std::move(front)),
      ports_(program_.folder),
      console_(journal_, StandardErrorIsTerminal() ? &ports_.loop : nullptr),
      shown_(front_.person ? front_.person(console_, ports_.loop) : nullptr),
      person_(shown_ ? *shown_ : console_, ports_.loop,
              shown_ ? JournalTail::kMostForReading : JournalTail::kMost) {}

Publisher::~Publisher() = default;

int Publisher::Fail(const std::string& reason) {
  journal_.Write({"", "", program_.name + ": " + reason});
  return kCannotStart;
}

// Nothing is destroyed: a worker thread may hang in a call to the system, and must not be waited for.
// Settings are on the disk already, the lock on the data folder goes with the process. Log and journal get
// a moment for what still waits to be written.
void Publisher::EndAtOnce(int status) {
  if (room_ != nullptr) room_->Close();
  log_.reset();
  journal_.Flush(ThreadedLineWriter::kGrace);
  NotifyServiceManager("EXIT_STATUS=" + std::to_string(status));
  std::_Exit(status);
}

int Publisher::Run() {
  ports_.loop.OnTaskFailure([this](const std::string& task, const std::string& what) {
    person_.Note("Internal error in " + task + ": " + what);
    ReportError("in " + task, what, 0, Report::kQuietly);
  });
  const std::string& folder = program_.folder;
  if (const Outcome made = ports_.files.CreateFolders(folder); !made) return Fail(made.Reason());
  Result<std::unique_ptr<SingleInstance>> instance = SingleInstance::Claim(folder);
  if (!instance) return Fail(instance.Reason());
  const bool alreadyRunning = instance.Value() == nullptr && !program_.options.noPreviousCheck;
  // A second instance reads the settings for its debug level only, and moves no damaged file of the first.
  const Result<std::unique_ptr<StoredHive>> hive =
      alreadyRunning ? OpenSettings(folder) : OpenSettingsToPublish(folder);
  if (hive) StartDebugLog(*hive.Value());
  if (alreadyRunning) return MeetRunning(hive ? hive.Value().get() : nullptr);
  if (!hive) return Fail(hive.Reason());
  return Publish(*hive.Value());
}

void Publisher::StartDebugLog(SettingsHive& hive) {
  const StartUpOptions& options = program_.options;
  const bool onCommandLine = FindIgnoringAsciiCase(options.commandLine, "/DEBUG") != std::string::npos;
  log_ = std::make_unique<DebugLog>(
      ports_.loop, ports_.files, person_, program_.logName, DebugLog::StartUpFolder(hive, program_.folder),
      DebugLog::StartUpLevel(options.commandLine, hive), onCommandLine, [](LineSink sink) {
        return std::make_unique<ThreadedLineWriter>(
            std::move(sink), ThreadedLineWriter::Options{.mostWaiting = kMostDebugBytes});
      });
  log_->Install();
  WriteDebugLine("Started InitialiseTool", 5, LineKind::kStarted);
  if (!options.noPreviousCheck) WriteDebugLine("Check if already running");
}

int Publisher::MeetRunning(StoredHive* hive) {
  if (front_.alreadyRunning) {
    bool edits = false;
    front_.alreadyRunning(hive, ports_.localSockets, [&](Front::Beside chosen) {
      edits = chosen == Front::Beside::kEdit && hive != nullptr;
      ports_.loop.Quit(kAlreadyRunning);
    });
    ports_.loop.Run();
    if (edits) return Edit(*hive);
  }
  WriteDebugLine("Exit as App already running");
  if (front_.alreadyRunning) EndAtOnce(kAlreadyRunning);
  Fail("another publisher runs on the data folder '" + program_.folder + "'");
  return kAlreadyRunning;
}

// The engine without anything that runs: its windows and dialogs work on what is stored, and the publisher
// that runs is told of each change.
int Publisher::Edit(StoredHive& hive) {
  WriteDebugLine("Editing the settings of the publisher that runs");
  UseLocale();
  const std::string& folder = program_.folder;
  CsvCartStore carts(ports_.files, person_, folder + "/Carts.csv");
  Environment environment = ports_.EngineOn(hive, person_, carts, folder);
  environment.publishes = false;
  const OutputFactory makeOutput = MakeOutputFactory(environment);
  const OpenHistory openHistory = [path = folder + "/history.db"] { return SqliteHistoryReader::Open(path); };
  frmMain main(environment, makeOutput, program_.options);
  main_ = &main;
  RunningElsewhere running(ports_.loop, ports_.localSockets, folder, front_.told);
  main.removeElsewhere = [&running](int number, std::function<void(const frmMain::Removed&)> done) {
    running.RemoveService(number, std::move(done));
  };
  const ProgramSignals programSignals(ports_.loop, [this](ProgramSignal signal) { OnSignal(signal); });
  const Engine engine{environment, main, makeOutput, person_, openHistory};
  front_.loading(engine);
  if (const Outcome loaded = main.Load(); !loaded) EndAtOnce(Fail(loaded.Reason()));
  TrustCaFile(environment);
  hive.SetPatience(kStorePatience);
  hive.onStored = [&running] { running.Stored(); };
  front_.editing(main);
  EndAtOnce(ports_.loop.Run());
}

void Publisher::UseLocale() {
  const SystemLocale locale = ReadSystemLocale();
  InstallLocale(locale.formats);
  if (!locale.problem.empty()) person_.Note(locale.problem);
}

int Publisher::Publish(StoredHive& hive) {
  WriteDebugLine("Read StartupOptions");
  UseLocale();
  WriteDebugLine("Initialising Tool");
  WriteDebugLine("Finished InitialiseTool", 5, LineKind::kFinished);

  const std::string& folder = program_.folder;
  CsvCartStore carts(ports_.files, person_, folder + "/Carts.csv");
  Environment environment = ports_.EngineOn(hive, person_, carts, folder);
  const std::string historyPath = folder + "/history.db";
  const OutputFactory makeOutput = MakeOutputFactory(environment);
  const OpenHistory openHistory = [path = historyPath] { return SqliteHistoryReader::Open(path); };
  frmMain main(environment, makeOutput, program_.options, std::make_shared<SqliteHistory>(historyPath));
  main_ = &main;
  const ProgramSignals programSignals(ports_.loop, [this](ProgramSignal signal) { OnSignal(signal); });
  const Engine engine{environment, main, makeOutput, person_, openHistory};
  if (front_.loading) front_.loading(engine);
  if (const Outcome loaded = main.Load(); !loaded) EndAtOnce(Fail(loaded.Reason()));
  TrustCaFile(environment);
  hive.SetPatience(kStorePatience);
  ControlRoom room(environment, ports_.localSockets, MakeSecrets(), main, person_, openHistory, UtcOffsetAt);
  room_ = &room;
  if (front_.opening) front_.opening(room);
  room.Open();
  const int count = main.NumberServices();
  person_.Note("ZEB " ZEB_VERSION " is ready: " + std::to_string(count) +
               (count == 1 ? " service" : " services") + ", data folder '" + folder + "'");
  if (front_.ready) front_.ready(main, room);
  EndAtOnce(ports_.loop.Run());
}

std::shared_ptr<Secrets> Publisher::MakeSecrets() {
  const Result<std::shared_ptr<Secrets>> secrets = SodiumSecrets::Make();
  if (secrets) return secrets.Value();
  person_.Note("Nobody can log on to the dashboard: " + secrets.Reason());
  return nullptr;
}

// Stations whose servers have certificates of their own making.
void Publisher::TrustCaFile(const Environment& environment) {
  const std::string path = environment.hive.ReadText(environment.settingsRoot, "TrustedCaFile", "");
  if (path.empty()) return;
  if (const Outcome added = ports_.network.AddCaFile(JoinPath(program_.folder, path)); !added)
    person_.Note(added.Reason());
}

void Publisher::OnSignal(ProgramSignal signal) {
  if (signal == ProgramSignal::kReload) return room_ != nullptr ? room_->Reload() : main_->Reload();
  Stop(signal == ProgramSignal::kInterrupt ? "Stopping (interrupted)" : "Stopping");
}

void Publisher::Stop(const std::string& why) {
  if (stopping_) {
    person_.Note("Ending at once");
    EndAtOnce(kCannotStart);
  }
  stopping_ = true;
  if (front_.stopping) front_.stopping();
  person_.Note(why);
  quitLimit_ = ports_.loop.After(kQuitLimit, [this] {
    const std::string updating = main_->UpdatingServices();
    person_.Note("Stopped without waiting longer for the " +
                 (updating.empty() ? "history" : "outputs of: " + updating));
    EndAtOnce(kEnded);
  });
  main_->Quit([this] { End(); });
}

void Publisher::End() {
  person_.Note("Stopped");
  EndAtOnce(kEnded);
}

}  // namespace zeb
