// ZebctlOptions: zebctl's command line, read into what its commands take.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "app/CommandTable.h"
#include "app/ExpandCommand.h"
#include "app/HistoryCommands.h"
#include "app/LintCommand.h"
#include "app/PublisherCommands.h"
#include "app/SendCommand.h"
#include "app/SettingsCommands.h"
#include "platform/Result.h"

namespace zeb {

struct ZebctlOptions {
  std::string home;        // --home; "" when it is not given
  std::string textToShow;  // not empty: --help, --version and the like, nothing else
  std::variant<SettingsOptions, SendOptions, ExpandOptions, PublisherOptions, HistoryOptions, LintOptions>
      command;
};

// Fails on wrong usage with one line that names the word at fault. `words` are those behind the program's
// name.
Result<ZebctlOptions> ReadZebctlOptions(const std::vector<std::string>& words);
CommandTable ZebctlTable();

}  // namespace zeb
