// ServiceManager: tells the system's service manager that the program is ready, alive or ending, when that
// has started it: systemd, where it asked to be told (Type=notify), and Windows' own. Otherwise nothing is
// done.
#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

// "READY=1", "STOPPING=1", "WATCHDOG=1", "STATUS=...", and, at the very end, "EXIT_STATUS=0".
void NotifyServiceManager(std::string_view state);
// How often "WATCHDOG=1" is expected; zero when it is not.
std::chrono::microseconds WatchdogInterval();

// Where something is asked for that Windows' administrators do (--install-service, --remove-service,
// --open-to-users) does it and gives the exit status. Where Windows' service manager has started this program
// (--service), begins to answer it, takes that word out of the arguments, and gives nothing: the program goes
// on as usual. Elsewhere gives nothing. `stop` is called, on another thread, when the program is to end,
// until it gives true.
std::optional<int> DoServiceCommand(const std::string& name, std::vector<std::string>& arguments,
                                    bool (*stop)(), std::ostream& out, std::ostream& err);

}  // namespace zeb
