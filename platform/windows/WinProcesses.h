// WinProcesses: runs another program in a job of its own, which ends with all that the program has started.
#pragma once

#include "platform/Processes.h"

namespace zeb {

class WinProcesses : public Processes {
 public:
  Outcome Run(const ProcessOrder& order) override;
};

}  // namespace zeb
