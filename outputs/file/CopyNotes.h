// CopyNotes: says which additional files are not published, each reason once until it changes: a picture that
// stays missing is worth one line, not one an update.
#pragma once

#include <functional>
#include <map>
#include <string>

namespace zeb {

class CopyNotes {
 public:
  // What was tried, by target: the reason, "" when all is well. `ofAll`: nothing else is wanted any more.
  // Whoever sends the items could have any number of files refused, so an update has few lines.
  void Take(const std::map<std::string, std::string>& tried, bool ofAll,
            const std::function<void(const std::string& line)>& note);

 private:
  std::map<std::string, std::string> failed_;  // reasons, by target
};

}  // namespace zeb
