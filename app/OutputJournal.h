// OutputJournal: what a service's outputs do, as journal lines: each update, and each output (or page of one)
// that begins to fail or works again. What goes on failing in the same way is reported once.
//
// Owned by the service window.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/clsZEBService.h"
#include "platform/Time.h"

namespace zeb {

class OutputJournal {
 public:
  explicit OutputJournal(clsZEBService& service) : service_(service) {}

  // Looks at the output's state and notes what has changed.
  void Check(OutputType type, int index);
  // An update is through.
  void NoteUpdate(const UpdateRecord& record);
  // An update has taken long and is not through.
  void NoteWaiting(const UpdateRecord& record) const;
  // A line about the service as a whole.
  void Note(const std::string& text) const;

 private:
  // What fails, by output. An entry whose output is gone means nothing, also when another takes its address.
  struct Known {
    std::weak_ptr<clsZEBTemplate> output;
    std::vector<clsZEBTemplate::Problem> problems;
  };
  void NoteChanges(const std::string& name, const std::vector<clsZEBTemplate::Problem>& before,
                   const std::vector<clsZEBTemplate::Problem>& now) const;

  clsZEBService& service_;
  std::map<const clsZEBTemplate*, Known> known_;
};

}  // namespace zeb
