#include "platform/windows/WinPower.h"

#include <windows.h>

namespace zeb {

WinPower::~WinPower() {
  SetThreadExecutionState(ES_CONTINUOUS);
}

void WinPower::StayAwake(const std::string&, std::function<void(const std::string& reason)> refused) {
  if (SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED | ES_DISPLAY_REQUIRED) == 0)
    refused("Windows refuses to stay awake");
}

}  // namespace zeb
