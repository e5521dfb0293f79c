// SetCommand: `zebctl set`: manual entry from a shell. It becomes the messages of a playout system, which are
// sent as `zebctl send` sends them.
#pragma once

#include <string>
#include <vector>

#include "app/SendCommand.h"

namespace zeb {

// `arguments` are those behind the word "set". Fails, naming it, on what it does not know.
Result<SendOptions> ReadSetOptions(const std::vector<std::string>& arguments);

}  // namespace zeb
