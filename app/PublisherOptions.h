// PublisherOptions: how the commands of PublisherCommands and StationCommands stand on zebctl's command line.
#pragma once

#include <optional>

#include "app/CommandLine.h"
#include "app/PublisherCommands.h"

namespace zeb {

void DeclarePublisherCommands(CLI::App& program);

// After a successful reading; nothing when the command is another.
std::optional<PublisherOptions> PublisherCommandOf(const CLI::App& command);

}  // namespace zeb
