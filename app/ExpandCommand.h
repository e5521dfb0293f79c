// ExpandCommand: `zebctl expand`: feeds control-link messages into a service without outputs and expands a
// template against it, to see what an output would send without sending it.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "core/OutputTypes.h"
#include "platform/Environment.h"
#include "platform/Result.h"
#include "platform/Time.h"

namespace zeb {

struct ExpandOptions {
  std::string simpleText{kDefaultSimpleTextFormat};
  bool urlEncode = false;
  std::string escape;  // a word of text/ValueEscapes.h
  bool listFiles = false;
  bool page = false;
  std::string messagesFile;
  std::string templateFile;     // "" or "-": standard input
  std::optional<WallTime> now;  // else the present moment
  int service = 0;              // above 0: with the settings of this stored service
};

// Writes the expanded text, byte for byte, to `out`, and the files that it refers to, one a line, to `err`
// when asked for. The environment's clock is the moment that tags see; its hive holds the settings.
Outcome RunExpandCommand(Environment& environment, const ExpandOptions& options,
                         std::string_view templateBytes, std::string_view messages, std::ostream& out,
                         std::ostream& err);

}  // namespace zeb
