// PosixProcesses: other programs as child processes, each in a process group of its own, with nothing of
// ours but the environment: no descriptors, no blocked signals; what it writes goes nowhere.
#pragma once

#include "platform/Processes.h"

namespace zeb {

class PosixProcesses : public Processes {
 public:
  Outcome Run(const ProcessOrder& order) override;
};

}  // namespace zeb
