// StationCommands: `zebctl service ...` and `zebctl output ...`: the services of a data folder and their
// outputs, listed and changed.
//
// Names and values are checked against the tables of the services and outputs (dialogs/ServiceEntry.h).
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "core/OutputTypes.h"
#include "platform/Environment.h"
#include "platform/Result.h"

namespace zeb {

using NamedValues = std::vector<std::pair<std::string, std::string>>;  // name and value, as they are given

struct StationOptions {
  enum class Action {
    kListServices,
    kAddService,
    kRemoveService,
    kRenameService,
    kListOutputs,
    kAddOutput,
    kRemoveOutput
  };
  Action action = Action::kListServices;
  int service = 0;  // of all but listing and adding services
  std::string name{};
  OutputType type = OutputType::kFile;  // of an output that is added or removed
  int output = 0;
  NamedValues values{};
  bool json = false;

  bool Changes() const { return action != Action::kListServices && action != Action::kListOutputs; }
};

// Does it in the environment's hive, all or nothing; what it has to say (a number, a list) goes to `out`.
// Services that run must not be removed so: theirs would show the items of others.
Outcome RunStationCommand(Environment& environment, const StationOptions& options, std::ostream& out);

}  // namespace zeb
