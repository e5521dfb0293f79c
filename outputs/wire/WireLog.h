// The text logs of what was sent: one file a service, day and line, below the service's logging path.
#pragma once

#include <string>
#include <string_view>

#include "core/clsZEBService.h"
#include "platform/Result.h"

namespace zeb {

// logging path, "Service NN", "yyyy-mm-dd" + suffix + ".log".
std::string WireLogPath(const clsZEBService& service, std::string_view suffix);
// Appends the text and a line end; waits. The outcome's reason has been written to the debug log.
Outcome AppendToWireLog(const clsZEBService& service, std::string_view suffix, std::string_view text);

}  // namespace zeb
