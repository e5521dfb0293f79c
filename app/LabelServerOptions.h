// LabelServerOptions: zeb-labelserver's command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/CommandTable.h"
#include "platform/Result.h"

namespace zeb {

struct LabelServerOptions {
  std::string config;
  std::string address = "127.0.0.1";
  std::uint16_t port = 4000;  // 0 takes a free one
  std::string textToShow;     // not empty: --help or --version, and nothing else
};

// Fails on wrong usage with one line that names the word at fault. `words` are those behind the program's
// name.
Result<LabelServerOptions> ReadLabelServerOptions(const std::vector<std::string>& words);
CommandTable LabelServerTable();

}  // namespace zeb
