// Processes: runs another program, for what an operator has set to be run.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/Result.h"
#include "platform/Time.h"

namespace zeb {

struct ProcessOrder {
  std::string program;  // a path; there is no shell, and there are no arguments
  std::vector<std::pair<std::string, std::string>> variables;  // besides those of this program
  Duration limit{};                                            // then it is killed, with what it has started
};

class Processes {
 public:
  virtual ~Processes() = default;
  // Runs the program to its end; to be called on a worker thread, where it blocks for `limit` and a moment at
  // most. The reason names the program: it cannot be started, was killed, or ended with another status than
  // 0.
  virtual Outcome Run(const ProcessOrder& order) = 0;
};

}  // namespace zeb
