// OutputJournal: what a service's outputs do, as journal lines: each update, each output that begins to fail
// and each that works again. An output that goes on failing in the same way is told of once.
//
// Owned by the service window.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "core/clsZEBService.h"
#include "platform/Time.h"

namespace zeb {

class OutputJournal {
 public:
  explicit OutputJournal(clsZEBService& service) : service_(service) {}

  // Looks at the output's state and notes a change.
  void Check(OutputType type, int index);
  // A full update of all outputs has ended.
  void NoteUpdate(Duration took);
  // A line about the service as a whole.
  void Note(const std::string& text) const;

 private:
  std::string CountsText() const;

  clsZEBService& service_;
  // What fails, by output. An entry whose output is gone means nothing, also when another takes its address.
  struct Problem {
    std::weak_ptr<clsZEBTemplate> output;
    std::string text;
  };
  std::map<const clsZEBTemplate*, Problem> problems_;
};

}  // namespace zeb
