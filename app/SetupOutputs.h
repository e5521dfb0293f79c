// SetupOutputs: the kinds of outputs that a station chooses from, what is asked for each, and the settings
// that come of it. Private to StationSetup.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/SetupAnswers.h"

namespace zeb {

// An output as it will be stored.
struct SetupOutput {
  OutputType type = OutputType::kFile;
  ServiceEntry::Settings settings;
  ServiceEntry::Settings root{};       // values of the settings root that it needs
  std::vector<std::string> templates;  // those of its pairs, as they are called in the examples
  std::string said;                    // "the folder /var/www/html"
  std::string text{};                  // its template, for one without pages
};

// What an answer may come from.
struct SetupFindings {
  std::string station;
  std::vector<std::string> serialPorts;
  std::string icecast;  // "127.0.0.1:8000" when one runs on this machine
  int freeSerialNumber = 1;
};

struct SetupKind {
  const char* word;
  const char* option;  // which says that it is wanted
  const char* text;
  // Templates of pairs are named below `templates`, with a "/" at its end.
  SetupOutput (*ask)(SetupAnswers& answers, const SetupFindings& found);
  std::vector<const char*> options;  // all that are asked for
};
const std::vector<SetupKind>& SetupKinds();

}  // namespace zeb
