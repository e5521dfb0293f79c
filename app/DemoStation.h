// The demo station that comes with the program: templates and settings of one station that publishes four
// files, for who wants to see how it works before anything is set up.
#pragma once

#include <string>

#include "platform/Environment.h"
#include "platform/Result.h"

namespace zeb {

// Where its files lie; "" when they did not come with this program. Looks at the disk.
std::string DemoStationFolder(const Environment& environment);

// In a task. Copies its templates into the data folder (files that are there already stay) and stores its
// settings; services are still to be read again. Fails, with nothing stored, when a service is there already
// or a file cannot be read or written.
Outcome StoreDemoStation(Environment& environment, const std::string& folder);

}  // namespace zeb
