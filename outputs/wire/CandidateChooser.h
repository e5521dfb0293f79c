// CandidateChooser: which text an output sends next: its main format, or one of its alternates, some of them
// from schedule files. Shared by the serial and the DAB output, each of which owns one.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "core/OutputTypes.h"
#include "core/ServiceSnapshot.h"
#include "outputs/wire/ScheduleFile.h"
#include "platform/Environment.h"
#include "platform/Result.h"
#include "platform/WorkLane.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

// What the operator has set.
struct WireFormats {
  std::string simpleText{kDefaultSimpleTextFormat};
  std::string append;               // with {hh} escapes
  std::string alternates;           // templates and "FILE:name" entries, separated by "|"
  bool alternatesWhenEmpty = true;  // only when the main text is empty

  std::string EscapeValues{};  // a word of text/ValueEscapes.h

  // How values are put into a template: one that holds a line end must not become two commands.
  ValueEncoding Values(std::string_view templateText) const {
    return {.escape = EscapeFor(EscapeValues, {}, templateText), .oneLine = true};
  }
};

enum class LineBreaks { kKept, kTakenOut };

class CandidateChooser {
 public:
  // `lane`: the owner's, for reading schedule files.
  CandidateChooser(Environment& environment, WorkLane& lane) : environment_(environment), lane_(lane) {}

  // Every text that may be sent now. Waits while schedule files are read; the reason names one that does not
  // answer. Line breaks are taken out before a text is looked at.
  Result<std::vector<std::string>> Candidates(const WireFormats& formats, const ServiceSnapshot& snapshot,
                                              LineBreaks breaks);
  // One of them at random; "" from none.
  std::string Pick(const std::vector<std::string>& candidates);

 private:
  using Schedules = std::map<std::string, ScheduleFile>;  // by path
  Result<Schedules> ReadSchedules(const std::vector<std::string_view>& alternates);
  std::string PathOf(std::string_view alternate) const;  // "" when it is no FILE: entry
  void NoteOnce(const std::string& path, const std::string& problem);

  Environment& environment_;
  WorkLane& lane_;
  std::map<std::string, std::string> noted_;  // the last problem of each file
  std::uint64_t picks_ = 0;
};

std::string WithoutLineBreaks(std::string text);

}  // namespace zeb
