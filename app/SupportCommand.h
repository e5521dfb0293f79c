// SupportCommand: `zebctl support`: a support file (SupportFile.h) of the data folder, whether zebd runs or
// not.
#pragma once

#include "app/PublisherCommands.h"
#include "platform/Environment.h"

namespace zeb {

// In a task. With the status of the publisher where one runs; its journal is the system's. `environment` has
// a hive, files and zips. What is in the file is listed on `out`. The exit status.
int RunSupportCommand(const CommandPorts& ports, const Environment& environment,
                      const SupportOptions& options);

}  // namespace zeb
