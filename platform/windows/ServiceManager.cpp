#include "platform/system/ServiceManager.h"

namespace zeb {

// Windows' service manager is told by the service itself.
void NotifyServiceManager(std::string_view) {}

std::chrono::microseconds WatchdogInterval() {
  return {};
}

}  // namespace zeb
