// HelpTopics: `zebctl help TOPIC`: a command's part of the help, or what a table of the program says.
#pragma once

#include <string>
#include <vector>

#include "app/CommandTable.h"
#include "platform/Result.h"

namespace CLI {
class App;
}

namespace zeb {

// What can be asked for, in the words of CommandTable.h.
std::string HelpTopicWords(const CommandTable& program);
// No words: the program's own help. Fails with one line that names the topics.
Result<std::string> HelpOn(const CLI::App& program, const std::vector<std::string>& words);

}  // namespace zeb
