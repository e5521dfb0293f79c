// ServiceManager: tells systemd that the program is ready, alive or ending, when systemd has started it and
// asked to be told (Type=notify). Otherwise everything here does nothing.
#pragma once

#include <chrono>
#include <string_view>

namespace zeb {

// "READY=1", "STOPPING=1", "WATCHDOG=1", "STATUS=...".
void NotifyServiceManager(std::string_view state);
// How often "WATCHDOG=1" is expected; zero when it is not.
std::chrono::microseconds WatchdogInterval();

}  // namespace zeb
