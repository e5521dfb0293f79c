// StationSetup: what `zebctl setup` does: asks, in a station's words, what a station needs, tries each output
// at once, shows what listeners would see, and stores all of it or nothing.
//
// Every answer may also be given beforehand, by the name of its option; then nothing is asked for it. What
// can be found out is not asked. Knows no terminal.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/OutputTypes.h"
#include "dialogs/ServiceEntry.h"
#include "platform/Environment.h"

namespace zeb {

struct SetupOptions {
  std::map<std::string, std::string> given;  // answers by option, "web-folder"
  bool yes = false;                          // store without asking
  bool keep = false;                         // also outputs whose test failed
};

// An answer's option, its value in help texts, and what it is; what it takes (CommandTable.h).
struct SetupOption {
  const char *name, *value, *help;
  const char* takes = "text";
};
extern const std::vector<SetupOption>& SetupOptionList();

// With whom it speaks.
class SetupTalk {
 public:
  virtual ~SetupTalk() = default;
  virtual bool CanAsk() const = 0;
  virtual void Say(const std::string& line) = 0;
  virtual void Complain(const std::string& line) = 0;  // why nothing was stored
  // Nothing: there will be no more answers.
  virtual std::optional<std::string> Ask(const std::string& question, bool secret) = 0;
};

struct SetupPorts {
  Environment& stored;   // what is to be changed
  Environment& draft;    // the same with an empty hive of its own, for trying
  std::string examples;  // the folder of the examples; "": they did not come with the program
  // In a task. What was stored is told to a publisher that runs; what that gave, in one line.
  std::function<std::string()> tellPublisher;
};

// In a task. The exit status: 0 stored, 1 not, 2 an answer is missing or wrong and nobody can be asked.
int RunSetup(const SetupPorts& ports, const SetupOptions& options, SetupTalk& talk);

}  // namespace zeb
