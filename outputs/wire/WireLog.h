// WireLog: the text logs of what an output has sent: one file a service, day and line, below the service's
// logging path.
//
// Owned by the output. Nothing here waits: lines are written in their order by a task of the log's own, so a
// logging path on a share that hangs delays no text. What cannot be written is told once in the journal until
// that changes; while the share hangs the lines wait for it, as many as fit the bound.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "core/ServiceSnapshot.h"
#include "platform/Environment.h"
#include "platform/Result.h"

namespace zeb {

// As the system's own programs end lines.
#ifdef _WIN32
inline constexpr char kWireLogLineEnd[] = "\r\n";
#else
inline constexpr char kWireLogLineEnd[] = "\n";
#endif

inline constexpr std::size_t kMaxWireLogLines = 1000;  // that wait to be written

class WireLog {
 public:
  explicit WireLog(Environment& environment);

  // Appends `text` and a line end to the file of the present day:
  // logging path, "Service NN", "yyyy-mm-dd" + suffix + ".log".
  void Append(const ServiceSnapshot& snapshot, std::string_view suffix, std::string_view text);

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace zeb
