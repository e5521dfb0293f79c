#include "app/frmMain.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <stdexcept>
#include <utility>

#include "core/RegFile.h"
#include "core/SettingsMigration.h"
#include "core/SettingsPaths.h"
#include "diagnostics/hxGeneral.h"
#include "outputs/file/LeftOvers.h"

namespace zeb {
namespace {

constexpr char kQuitQuestion[] =
    "If Tolvan is using ZEB as it's 'On-Air Controller' then it will be automatically switch itself "
    "'Off-Air'\n"
    "Are you sure you want to quit from ZEB?";
constexpr char kWaitQuestion[] =
    "ZEB cannot be closed until it has finished updating it's outputs\n\n"
    "Do you want it to close when it has finished?";

// There is no limit to how long an update may take; whoever runs the program has the last word.
constexpr std::chrono::seconds kReloadRetry(10);
constexpr Duration kAlarmLook = std::chrono::seconds(1);
constexpr Duration kReloadTurn = std::chrono::milliseconds(20);
constexpr Duration kNoLimit = std::chrono::hours(24 * 365 * 20);

}  // namespace

frmMain::frmMain(Environment& environment, OutputFactory makeOutput, StartUpOptions options,
                 std::shared_ptr<HistoryStore> history)
    : environment_(environment),
      makeOutput_(std::move(makeOutput)),
      options_(std::move(options)),
      historyStore_(std::move(history)),
      alarms_(environment) {
  environment_.preserveTempFiles = options_.preserveTempFiles;
}

frmMain::~frmMain() {
  onChanged = nullptr;
  display = {};
  epoch_.Next();
  ShrinkTo(0);
}

Outcome frmMain::Load() {
  try {
    if (environment_.publishes)
      if (Outcome imported = ImportSettings(); !imported) return imported;
    const SettingsRoot root = ChooseSettingsRoot(environment_.hive);
    environment_.settingsRoot = root.inUse;
    DebugLine("Starting Hexmoor ZEB v", ZEB_VERSION);
    if (display.splash) {
      WriteDebugLine("Loading Splash Screen");
      display.splash("", "Initialising settings..");
    }
    WriteDebugLine("Displayed OK");
    const int count = ReadNumberServices(environment_.hive, root.inUse);
    DebugLine("Found ", count, " ZEB Services in Registry");
    if (root.migrate && environment_.publishes) {
      const Outcome migrated = MigrateServices(environment_, makeOutput_, root, count);
      environment_.person.Note(migrated
                                   ? "The previous version's services are now under '" + root.profile + "'"
                                   : migrated.Reason());
    }
    KeepHistory();
    LoadServices();
    ArrangeWindows();
    if (!environment_.publishes) return {};
    alarms_.ReadSettings();
    alarmLook_ = environment_.loop.Every(kAlarmLook, [this] { LookForAlarms(); });
    // Another instance on the data folder may have its files in hand.
    if (!options_.noPreviousCheck) RemoveLeftOvers();
    WriteDebugLine("Shown Services OK");
    if (options_.minimised && display.minimise) display.minimise();
    return {};
  } catch (const std::exception& error) {
    ReportException("loading the services", Report::kQuietly);
    return Failure{error.what()};
  }
}

Outcome frmMain::ImportSettings() {
  if (options_.importFile.empty()) return {};
  const std::string& file = options_.importFile;
  const Result<std::string> bytes = environment_.files.Read(file, kMaxRegFileBytes);
  if (!bytes) return Failure{"cannot import settings: " + bytes.Reason()};
  const Result<RegSummary> summary = ImportRegFile(environment_.hive, bytes.Value());
  if (!summary) return Failure{"cannot import '" + file + "': " + summary.Reason()};
  environment_.person.Note("Imported '" + file + "': " + summary.Value().Text());
  return {};
}

// As the settings say now.
void frmMain::KeepHistory() {
  if (!historyStore_) return;
  const auto limits = ReadHistoryLimits(environment_.hive, environment_.settingsRoot);
  if (history_)
    history_->SetLimits(limits);
  else
    history_ = std::make_shared<HistoryRecorder>(environment_, historyStore_, limits);
}

void frmMain::LoadServices() {
  const int count = ReadNumberServices(environment_.hive, environment_.settingsRoot);
  WriteDebugLine("Pre-create Services");
  windows_.reserve(static_cast<std::size_t>(count));
  // In one transaction: a store that somebody has locked is a failure at once, not one for each setting.
  environment_.hive.ReadTransaction([&] {
    for (int number = NumberServices() + 1; number <= count; ++number) OpenWindow(number);
  });
  WriteDebugLine("Services Created OK");
}

// At the start only: later the windows stand where the operator has put them.
void frmMain::ArrangeWindows() const {
  if (!display.arrange) return;
  WriteDebugLine("Pre-set window size OK");
  display.arrange();
  WriteDebugLine("Set window size OK");
}

void frmMain::RemoveLeftOvers() const {
  LeftOvers leftOvers(environment_);
  for (const auto& window : windows_) {
    const clsZEBService& service = window->service();
    for (int i = 1; const OutputPtr output = service.Output(OutputType::kFile, i); ++i)
      if (const auto pages = std::dynamic_pointer_cast<PairOutput>(output)) leftOvers.AddPages(*pages);
  }
  leftOvers.Remove();
}

// A service that cannot be opened keeps its place in the list, so that the others keep their numbers.
void frmMain::OpenWindow(int number) {
  windows_.push_back(frmService::Create(environment_, makeOutput_, history_));
  windows_.back()->Board().onChanged = [this, window = windows_.back().get(), first = windows_.size() - 1] {
    const auto is = [&](const auto& kept) { return kept.get() == window; };
    // Nearly always where it was when it was opened.
    const auto found = first < windows_.size() && is(windows_[first])
                           ? windows_.begin() + static_cast<std::ptrdiff_t>(first)
                           : std::find_if(windows_.begin(), windows_.end(), is);
    if (found != windows_.end()) Tell(static_cast<int>(found - windows_.begin()) + 1);
  };
  Tell(0);
  try {
    windows_.back()->Open(number);
  } catch (const std::exception& error) {
    ReportException("opening service " + std::to_string(number), Report::kQuietly);
    environment_.person.Note("Service " + std::to_string(number) + " could not be opened: " + error.what());
  }
}

// It may take a while to close, and outlive this object.
void frmMain::LetGo(frmService& window) {
  window.Board().onChanged = nullptr;
  window.Close();
}

void frmMain::Tell(int number) const {
  if (onChanged) onChanged(number);
  if (display.changed) display.changed(number);
}

int frmMain::AddService() {
  const int number = NumberServices() + 1;
  if (number > kMaxServices) {
    ShowProblem("adding a service", "there are " + std::to_string(kMaxServices) + " already", Report::kShown);
    return 0;
  }
  try {
    WriteDebugLine("Incrementing NumberServices");
    WriteNumberServices(environment_.hive, environment_.settingsRoot, number);
  } catch (const std::exception&) {
    ReportException("adding a service", Report::kShown);
    return 0;
  }
  WriteDebugLine("Loading New Service info");
  OpenWindow(number);
  WriteDebugLine("Displaying New Service");
  WriteDebugLine("Editing New Service");
  return number;
}

void frmMain::RemoveService(int number) {
  if (removeAsked_ || quitting_ || number < 1 || number > NumberServices()) return;
  removeAsked_ = true;
  const std::shared_ptr<frmService>& window = Window(number);
  environment_.person.Ask(
      "Are you sure you want to remove the Service \"" + window->service().settings.ServiceName + "\"?",
      [this, mark = epoch_.Now(), asked = std::weak_ptr(window)](bool yes) {
        if (!mark.Holds()) return;
        removeAsked_ = false;
        if (!yes || quitting_) return;
        if (removeElsewhere)
          RemoveElsewhere(asked.lock());
        else
          (void)RemoveWindow(asked.lock());
      });
}

// What the other program has stored is read again, so that the later services have their new numbers here
// too.
void frmMain::RemoveElsewhere(const std::shared_ptr<frmService>& window) {
  const auto found = std::find(windows_.begin(), windows_.end(), window);
  if (found == windows_.end()) return;
  removeElsewhere(static_cast<int>(found - windows_.begin()) + 1,
                  [this, mark = epoch_.Now(), gone = std::weak_ptr(window)](const Removed& removed) {
                    if (!mark.Holds() || quitting_) return;
                    if (removed.nobodyRuns) {
                      (void)RemoveWindow(gone.lock());
                    } else if (removed.outcome) {
                      Reload();
                    } else {
                      ShowProblem("removing a service", removed.outcome.Reason(), Report::kShown);
                    }
                  });
}

Outcome frmMain::RemoveConfirmed(int number) {
  if (quitting_) return Failure{"the publisher is ending"};
  if (number < 1 || number > NumberServices()) return Failure{"there is no such service"};
  return RemoveWindow(std::shared_ptr(Window(number)));
}

// While the question was open the service may have got another number, or may have gone.
Outcome frmMain::RemoveWindow(const std::shared_ptr<frmService>& window) {
  const auto found = std::find(windows_.begin(), windows_.end(), window);
  if (found == windows_.end()) return Failure{"the service has gone already"};
  const auto at = found - windows_.begin();
  if (Outcome stored = StoreWithout(static_cast<int>(at) + 1); !stored) return stored;
  environment_.person.Note(window->service().settings.ServiceName + ": removed, was service " +
                           std::to_string(at + 1));
  LetGo(*window);
  windows_.erase(windows_.begin() + at);
  Tell(0);
  return {};
}

// All in one transaction: a failure in the middle must not leave two services under one number. The services
// that had moved by then no longer match the store, so they are opened again from it.
Outcome frmMain::StoreWithout(int number) {
  SettingsHive& hive = environment_.hive;
  const int count = NumberServices();
  std::string reason;
  try {
    hive.Transaction([&] {
      TakeStoredOver(number + 1);
      hive.DeleteKey(environment_.ServiceKey(number));
      for (int i = number + 1; i <= count; ++i)
        if (!Window(i)->service().MoveToServiceNumber(i - 1))
          throw SettingsError("service " + std::to_string(i) + " could not be moved");
      hive.DeleteKey(environment_.ServiceKey(count));
      WriteNumberServices(hive, environment_.settingsRoot, count - 1);
    });
    return {};
  } catch (const std::exception& error) {
    reason = error.what();
    ReportException("removing a service", Report::kShown);
  }
  if (number < count && Window(number + 1)->service().ServiceNumber() == number) {
    ShrinkTo(number);
    for (int i = number + 1; i <= count; ++i) OpenWindow(i);
  }
  return Failure{reason};
}

// What others have stored since the settings were read must not be lost when the services are written again.
void frmMain::TakeStoredOver(int from) {
  if (ReadNumberServices(environment_.hive, environment_.settingsRoot) != NumberServices()) {
    environment_.loop.Post([this, mark = epoch_.Now()] {
      if (mark.Holds()) Reload();
    });
    throw SettingsError("services were added or removed meanwhile; the settings are being read, try again");
  }
  for (int number = from; number <= NumberServices(); ++number)
    if (const Outcome read = Window(number)->Reload(); !read) throw SettingsError(read.Reason());
}

void frmMain::Reload() {
  reloadRetry_.Stop();
  if (quitting_) return;
  reloadWanted_ = true;
  if (reloading_) return;
  reloading_ = true;
  environment_.loop.Start("reload", [this, mark = epoch_.Now()] {
    while (mark.Holds() && std::exchange(reloadWanted_, false)) ReloadAll(mark);
    if (mark.Holds()) reloading_ = false;
  });
}

void frmMain::ReloadAll(const Epoch::Mark& mark) {
  try {
    const SettingsRoot root = ChooseSettingsRoot(environment_.hive);
    // The previous version's services are copied at a start only, before any of them runs.
    if (!root.migrate) environment_.settingsRoot = root.inUse;
    const int count = ReadNumberServices(environment_.hive, environment_.settingsRoot);
    KeepHistory();
    ShrinkTo(count);
    if (const Outcome outcome = ReloadWindows(mark); !outcome) return ReloadLater(outcome.Reason());
    if (!mark.Holds() || quitting_) return;
    LoadServices();
    alarms_.ReadSettings();
    environment_.person.Note("Settings read again, " + std::to_string(count) +
                             (count == 1 ? " service" : " services"));
  } catch (const std::exception& error) {
    ReportException("reading the settings again", Report::kQuietly);
    ReloadLater(std::string("the settings stay as they were: ") + error.what());
  }
}

// A thousand services are not read in one go: what goes on air meanwhile must not wait for it.
Outcome frmMain::ReloadWindows(const Epoch::Mark& mark) {
  MonotonicTime turn = environment_.loop.Monotonic();
  for (int number = 1; number <= NumberServices(); ++number) {
    if (Outcome outcome = Window(number)->Reload(); !outcome) return outcome;
    Window(number)->Board().Changed();
    if (environment_.loop.Monotonic() - turn < kReloadTurn) continue;
    environment_.loop.Wait(Duration::zero());
    if (!mark.Holds() || quitting_) return {};
    turn = environment_.loop.Monotonic();
  }
  return {};
}

// Whoever holds the store (an import, a backup) will let go of it.
void frmMain::ReloadLater(const std::string& reason) {
  environment_.person.Note("Cannot read the settings again: " + reason + "; trying again in " +
                           std::to_string(kReloadRetry.count()) + " s");
  reloadRetry_ = environment_.loop.After(kReloadRetry, [this] { Reload(); });
}

// Not while everything is being closed: that is no trouble.
void frmMain::LookForAlarms() {
  if (quitting_ || !alarms_.Wanted()) return;
  std::vector<Trouble> troubles;
  for (const auto& window : windows_)
    for (Trouble& trouble : window->Board().Troubles()) troubles.push_back(std::move(trouble));
  alarms_.Look(troubles);
}

void frmMain::ShrinkTo(int count) {
  while (NumberServices() > count) {
    LetGo(*windows_.back());
    windows_.pop_back();
    Tell(0);
  }
}

std::string frmMain::UpdatingServices() const {
  std::string names;
  for (const auto& window : windows_)
    if (window->service().UpdateInProgress())
      names += (names.empty() ? "" : ", ") + window->service().settings.ServiceName;
  return names;
}

bool frmMain::AllClosed() const {
  return std::all_of(windows_.begin(), windows_.end(), [](const auto& window) { return window->Closed(); });
}

void frmMain::RequestQuit(std::function<void()> closed) {
  if (quitting_ || std::exchange(quitAsked_, true)) return;
  environment_.person.Ask(kQuitQuestion, [this, closed = std::move(closed), mark = epoch_.Now()](bool yes) {
    if (!mark.Holds()) return;
    if (!yes)
      quitAsked_ = false;
    else if (UpdatingServices().empty())
      Quit(closed);
    else
      AskWhetherToWait(closed);
  });
}

void frmMain::AskWhetherToWait(const std::function<void()>& closed) {
  environment_.person.Ask(kWaitQuestion, [this, closed, mark = epoch_.Now()](bool yes) {
    if (!mark.Holds()) return;
    quitAsked_ = yes;
    if (!yes) return;
    if (display.splash) display.splash("Updates in progress..", "Waiting to exit");
    environment_.loop.Start("wait for the updates", [this, closed, mark] {
      environment_.loop.WaitUntil([this, mark] { return !mark.Holds() || UpdatingServices().empty(); },
                                  kNoLimit);
      if (mark.Holds()) Quit(closed);
    });
  });
}

void frmMain::Quit(std::function<void()> closed) {
  if (std::exchange(quitting_, true)) return;
  closed_ = std::move(closed);
  for (const auto& window : windows_) window->Close();
  if (AllClosed() && !history_) return ServiceFinished();
  environment_.loop.Start("quit", [this, mark = epoch_.Now(), history = history_] {
    environment_.loop.WaitUntil([this, mark] { return !mark.Holds() || AllClosed(); }, kNoLimit);
    if (history) history->Close();
    if (mark.Holds()) ServiceFinished();
  });
}

void frmMain::ServiceFinished() {
  if (!quitting_ || !closed_ || !AllClosed()) return;
  WriteDebugLine("Start TerminateTool");
  WriteDebugLine("Finished OK");
  std::exchange(closed_, nullptr)();
}

}  // namespace zeb
