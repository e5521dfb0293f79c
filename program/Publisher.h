// Publisher: everything that publishes, put together on the real ports: the lock on the data folder,
// settings, debug log, locale, carts, history, engine and control room. A program adds its front: zebd adds
// nothing to be seen, a program with windows its windows.
//
// Signals: SIGHUP reads the settings again; SIGTERM and SIGINT end the publisher within five seconds, a
// second one at once.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/ConsoleOperator.h"
#include "app/ControlRoom.h"
#include "app/RunningElsewhere.h"
#include "app/StartUpOptions.h"
#include "app/frmMain.h"
#include "dashboard/JournalTail.h"
#include "diagnostics/hxGeneral.h"
#include "platform/StoredHive.h"
#include "platform/ThreadedLineWriter.h"
#include "platform/qt/ProgramSignals.h"
#include "program/RealPorts.h"

namespace zeb {

// How a program ends.
enum ProgramExit { kEnded = 0, kCannotStart = 1, kAlreadyRunning = 3 };

// What a process that publishes needs before its Qt application is made.
enum class Windows { kNone, kSome };
void PrepareProcess(LineWriter& journal, Windows windows = Windows::kNone);

class Publisher {
 public:
  struct Program {
    std::string name;     // "zebd": how its own lines in the journal begin
    std::string logName;  // as it was called; in the debug log
    StartUpOptions options;
    std::string folder;  // the data folder
  };
  // What a front works with; it lives until the process ends.
  struct Engine {
    Environment& environment;
    frmMain& main;
    const OutputFactory& makeOutput;
    JournalTail& journal;
    const OpenHistory& openHistory;
  };
  // All optional, called on the loop's thread.
  struct Front {
    // Who is told and asked, in the place of the given one, which writes the journal and outlives it.
    std::function<std::unique_ptr<Operator>(Operator& journal, EventLoop& loop)> person;
    std::function<void(const Engine&)> loading;  // before the services are loaded: the time to set a display
    std::function<void(ControlRoom&)> opening;   // before its ways in are opened: the time to add requests
    std::function<void(frmMain&, ControlRoom&)> ready;
    // Another publisher has the data folder; null: its settings cannot be read. `answered` ends the process,
    // or lets its settings be edited: then `loading` is called, and `editing` in the place of `ready`.
    // Without this a line in the journal tells.
    enum class Beside { kEnd, kEdit };
    using Answered = std::function<void(Beside)>;
    std::function<void(SettingsHive*, LocalSockets&, const Answered&)> alreadyRunning;
    std::function<void(frmMain&)> editing{};
    // What became of a change that was made so.
    std::function<void(RunningElsewhere::Told, const std::string& reason)> told{};
    std::function<void()> stopping;  // asked to end; what is on air is ended
  };

  // The journal outlives this object.
  Publisher(ThreadedLineWriter& journal, Program program, Front front);
  ~Publisher();

  // Publishes until it is to end, and then ends the process. Returns only what kept it from starting.
  int Run();
  // As a signal does: without a question.
  void Stop(const std::string& why);
  // Everything is closed, as a person wanted it (frmMain::RequestQuit): ends the process.
  [[noreturn]] void End();
  EventLoop& Loop() { return ports_.loop; }

 private:
  int Fail(const std::string& reason);
  [[noreturn]] void EndAtOnce(int status);
  void StartDebugLog(SettingsHive& hive);
  int MeetRunning(StoredHive* hive);
  void UseLocale();
  int Publish(StoredHive& hive);
  int Edit(StoredHive& hive);
  std::shared_ptr<Secrets> MakeSecrets();
  void TrustCaFile(const Environment& environment);
  void OnSignal(ProgramSignal signal);

  ThreadedLineWriter& journal_;
  const Program program_;
  const Front front_;
  RealPorts ports_;
  ConsoleOperator console_;
  const std::unique_ptr<Operator> shown_;  // the front's; null: the console alone
  JournalTail person_;
  std::unique_ptr<DebugLog> log_;
  frmMain* main_ = nullptr;
  ControlRoom* room_ = nullptr;
  bool stopping_ = false;
  Timer quitLimit_;
};

}  // namespace zeb
