// CommandTable: what can be given to a program, as its help shows it, for what else is made of it.
#pragma once

#include <string>
#include <vector>

namespace zeb {

// What a value is: "text", "file", "folder", "service" (its number), "output" (File1), or "=" and the words
// that it can be, with blanks between.
struct OptionRow {
  std::vector<std::string> names{};  // with their dashes
  std::string value;                 // what it takes; "" for none
  std::string help;
};

struct CommandTable {
  std::string name, help;
  std::vector<OptionRow> options{};
  std::vector<std::string> words{};  // what each word without a name is
  bool manyWords = false;            // the last one may come again
  std::vector<CommandTable> commands{};
};

}  // namespace zeb
