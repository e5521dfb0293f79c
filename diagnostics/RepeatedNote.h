// RepeatedNote: keeps an event that may come in floods from flooding the journal: about one line a minute,
// which tells how many were left out.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/Time.h"

namespace zeb {

class RepeatedNote {
 public:
  // What to add to the line now; nothing when the line is to be left out.
  std::optional<std::string> Next(MonotonicTime now) {
    if (last_ && now - *last_ < std::chrono::minutes(1)) {
      ++leftOut_;
      return std::nullopt;
    }
    last_ = now;
    std::string more = leftOut_ == 0 ? "" : " (" + std::to_string(leftOut_) + " more since the last line)";
    leftOut_ = 0;
    return more;
  }

 private:
  std::optional<MonotonicTime> last_;
  unsigned long leftOut_ = 0;
};

}  // namespace zeb
