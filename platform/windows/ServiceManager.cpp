#include "platform/system/ServiceManager.h"

#include <windows.h>

#include <mutex>
#include <ostream>
#include <thread>

#include "platform/system/DataFolder.h"
#include "platform/windows/JournalFile.h"
#include "platform/windows/Rights.h"
#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr wchar_t kService[] = L"ZEB";
// The publisher is gone within five seconds after it was asked to stop.
constexpr DWORD kStopMilliseconds = 6000;
constexpr DWORD kStartMilliseconds = 60'000;
// After a crash: at once, and again; the count of failures starts anew after a day.
constexpr DWORD kRestartMilliseconds = 2000;
constexpr DWORD kForgetSeconds = 24 * 60 * 60;

bool (*stopOrder)() = nullptr;  // set before the service manager is answered

// A program that does not listen yet is asked again until it does.
void AskToStop() {
  constexpr int kTries = 100;
  constexpr DWORD kPauseMilliseconds = 50;
  for (int left = kTries; left > 0 && !stopOrder(); --left) Sleep(kPauseMilliseconds);
}

// What the service manager has been told; used from its threads and ours.
class Told {
 public:
  // The program may be ready before the service manager calls.
  void Begin(SERVICE_STATUS_HANDLE handle) {
    const std::lock_guard lock(mutex_);
    handle_ = handle;
    const DWORD reached = state_;
    Tell(SERVICE_START_PENDING, kStartMilliseconds);
    if (reached != SERVICE_START_PENDING) Tell(reached, 0);
  }
  void Now(DWORD state, DWORD within, DWORD exitCode = NO_ERROR) {
    const std::lock_guard lock(mutex_);
    if (state_ != SERVICE_STOPPED) Tell(state, within, exitCode);
  }
  // Asked how it is: the same again, further on.
  void Again() {
    const std::lock_guard lock(mutex_);
    Tell(state_, within_);
  }

 private:
  void Tell(DWORD state, DWORD within, DWORD exitCode = NO_ERROR) {
    state_ = state;
    within_ = within;
    if (handle_ == nullptr) return;
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    const bool takesOrders = state == SERVICE_RUNNING;
    status.dwControlsAccepted = takesOrders ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN : 0;
    status.dwWin32ExitCode = exitCode == NO_ERROR ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
    status.dwServiceSpecificExitCode = exitCode;
    const bool underWay = state == SERVICE_START_PENDING || state == SERVICE_STOP_PENDING;
    status.dwCheckPoint = underWay ? ++checkPoint_ : 0;
    status.dwWaitHint = within;
    SetServiceStatus(handle_, &status);
  }

  std::mutex mutex_;
  SERVICE_STATUS_HANDLE handle_ = nullptr;
  DWORD state_ = SERVICE_START_PENDING;
  DWORD within_ = 0;
  DWORD checkPoint_ = 0;
};

Told& TheTold() {
  static auto* const told = new Told();  // threads of the system use it to the very end
  return *told;
}

DWORD WINAPI OnOrder(DWORD order, DWORD, void*, void*) {
  switch (order) {
    case SERVICE_CONTROL_STOP:
    case SERVICE_CONTROL_SHUTDOWN:
      TheTold().Now(SERVICE_STOP_PENDING, kStopMilliseconds);
      AskToStop();
      return NO_ERROR;
    case SERVICE_CONTROL_INTERROGATE:
      TheTold().Again();
      return NO_ERROR;
    default:
      return ERROR_CALL_NOT_IMPLEMENTED;
  }
}

// Called on a thread of the dispatcher's; the service lives until the process ends.
void WINAPI ServiceBegins(DWORD, wchar_t**) {
  TheTold().Begin(RegisterServiceCtrlHandlerExW(kService, OnOrder, nullptr));
}

// The loop keeps the main thread; the service manager gets one of its own.
void AnswerServiceManager() {
  std::thread([] {
    std::wstring name = kService;
    const SERVICE_TABLE_ENTRYW table[] = {{name.data(), ServiceBegins}, {nullptr, nullptr}};
    StartServiceCtrlDispatcherW(table);
  }).detach();
}

// ---- Setting the service up

struct ScHandle {
  explicit ScHandle(SC_HANDLE given) : handle(given) {}
  ~ScHandle() {
    if (handle) CloseServiceHandle(handle);
  }
  ScHandle(const ScHandle&) = delete;
  ScHandle& operator=(const ScHandle&) = delete;
  SC_HANDLE handle;
};

int Fail(std::ostream& err, const std::string& name, const std::string& what) {
  const DWORD error = GetLastError();
  err << name << ": " << what << ": " << SystemErrorText(error)
      << (error == ERROR_ACCESS_DENIED ? " (start it as administrator)" : "") << std::endl;
  return 1;
}

std::wstring CommandFor(const std::vector<std::string>& arguments) {
  std::wstring program(32768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  std::wstring command = L"\"" + program + L"\" --service";
  for (const std::string& argument : arguments) command += L" \"" + Wide(argument) + L"\"";
  return command;
}

// The one that the arguments name, else the usual one; "" when there is none.
std::string DataFolderOf(const std::vector<std::string>& arguments) {
  std::string home;
  for (std::size_t i = 0; i + 1 < arguments.size(); ++i)
    if (arguments[i] == "--home") home = arguments[i + 1];
  const auto folder = ChooseDataFolder(FindDataFolderPlaces(home));
  return folder ? folder.Value() : "";
}

// Where its own lines go, which nobody would see.
void KeepJournal(const std::vector<std::string>& arguments) {
  const std::string folder = DataFolderOf(arguments);
  if (folder.empty()) return;
  CreateDirectoryW(Wide(folder).c_str(), nullptr);
  JournalFile::Choose(JoinPath(folder, "journal.txt"));
}

// Not running it by the whole system's rights: files and settings are what the installer opens to it.
int Install(const std::string& name, const std::vector<std::string>& arguments, std::ostream& out,
            std::ostream& err) {
  const ScHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE));
  if (!manager.handle) return Fail(err, name, "the service manager cannot be reached");
  const ScHandle service(CreateServiceW(manager.handle, kService, L"ZEB now playing", SERVICE_ALL_ACCESS,
                                        SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                                        CommandFor(arguments).c_str(), nullptr, nullptr, nullptr,
                                        L"NT AUTHORITY\\LocalService", nullptr));
  if (!service.handle) return Fail(err, name, "the service cannot be made");
  std::wstring words = L"Publishes the station's now-playing information";
  SERVICE_DESCRIPTIONW description{words.data()};
  ChangeServiceConfig2W(service.handle, SERVICE_CONFIG_DESCRIPTION, &description);
  SC_ACTION again{SC_ACTION_RESTART, kRestartMilliseconds};
  SERVICE_FAILURE_ACTIONSW failures{};
  failures.dwResetPeriod = kForgetSeconds;
  failures.cActions = 1;
  failures.lpsaActions = &again;
  ChangeServiceConfig2W(service.handle, SERVICE_CONFIG_FAILURE_ACTIONS, &failures);
  if (const Outcome opened = OpenTo(Account::kLocalService, DataFolderOf(arguments)); !opened)
    err << name << ": " << opened.Reason() << std::endl;
  out << "The service 'ZEB' starts with the machine from now on; 'net start ZEB' starts it now." << std::endl;
  return 0;
}

int Remove(const std::string& name, std::ostream& out, std::ostream& err) {
  const ScHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  if (!manager.handle) return Fail(err, name, "the service manager cannot be reached");
  const ScHandle service(OpenServiceW(manager.handle, kService, SERVICE_STOP | DELETE));
  if (!service.handle) return Fail(err, name, "the service 'ZEB' cannot be opened");
  SERVICE_STATUS status{};
  ControlService(service.handle, SERVICE_CONTROL_STOP, &status);
  if (DeleteService(service.handle) == 0) return Fail(err, name, "the service 'ZEB' cannot be removed");
  out << "The service 'ZEB' is removed; settings and pages stay." << std::endl;
  return 0;
}

int OpenToUsers(const std::string& name, const std::vector<std::string>& arguments, std::ostream& out,
                std::ostream& err) {
  const std::string folder = DataFolderOf(arguments);
  if (const Outcome opened = OpenTo(Account::kUsers, folder); !opened) {
    err << name << ": " << opened.Reason() << " (start it as administrator)" << std::endl;
    return 1;
  }
  out << "Every user of this computer may change the settings and '" << folder << "' from now on."
      << std::endl;
  return 0;
}

}  // namespace

void NotifyServiceManager(std::string_view state) {
  if (state == "READY=1") TheTold().Now(SERVICE_RUNNING, 0);
  if (state == "STOPPING=1") TheTold().Now(SERVICE_STOP_PENDING, kStopMilliseconds);
  constexpr std::string_view kExit = "EXIT_STATUS=";
  if (state.starts_with(kExit)) TheTold().Now(SERVICE_STOPPED, 0, state == "EXIT_STATUS=0" ? NO_ERROR : 1);
}

std::chrono::microseconds WatchdogInterval() {
  return {};
}

std::optional<int> DoServiceCommand(const std::string& name, std::vector<std::string>& arguments,
                                    bool (*stop)(), std::ostream& out, std::ostream& err) {
  if (arguments.empty()) return std::nullopt;
  const std::string command = arguments.front();
  if (command != "--service" && command != "--install-service" && command != "--remove-service" &&
      command != "--open-to-users")
    return std::nullopt;
  arguments.erase(arguments.begin());
  if (command == "--install-service") return Install(name, arguments, out, err);
  if (command == "--remove-service") return Remove(name, out, err);
  if (command == "--open-to-users") return OpenToUsers(name, arguments, out, err);
  KeepJournal(arguments);
  stopOrder = stop;
  AnswerServiceManager();
  return std::nullopt;
}

}  // namespace zeb
