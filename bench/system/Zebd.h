// zebd of this build as a process, on a temporary data folder.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "bench/system/Process.h"

namespace zeb::bench {

// Writes the settings of N services into the data folder: InstantUpdate on, a control port (`ports` + i), and
// pairs as Publisher names them.
void SetUpFilePairs(const std::filesystem::path& home, int ports, int services, int pairs);
// The same without outputs, each service with an information file "in/i/onair.wsx" that it looks at.
void SetUpPolledFiles(const std::filesystem::path& home, int services);

struct StartedZebd {
  std::unique_ptr<Process> process;
  double seconds;  // from before its start until it said that it is ready
};
StartedZebd StartZebd(const std::filesystem::path& home, Process::Cores cores);

}  // namespace zeb::bench
