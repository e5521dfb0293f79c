// HistoryCommands: `zebctl history`, `zebctl why`, `zebctl replay`: what was on air and what was shown, read
// from the history's file, whether a publisher runs or not.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "core/OutputTypes.h"
#include "history/HistoryForms.h"
#include "history/HistoryRequest.h"
#include "platform/HistoryStore.h"
#include "text/MomentText.h"

namespace zeb {

struct HistoryOptions {
  enum class Action { kList, kSongs, kWhy, kReplay };
  Action action = Action::kList;
  int service = 0;                        // 0: all of them
  std::string output;                     // "File2"; "": all
  std::optional<WrittenMoment> from, to;  // `to` itself no longer belongs to it
  HistoryForm form = HistoryForm::kTable;
  WrittenMoment at;   // of `why`
  bool full = false;  // of `why`: templates in full
  // Of `replay`.
  std::string templateFile;  // "-": standard input
  bool page = false, urlEncode = false;
  std::string simpleText{kDefaultSimpleTextFormat};
  std::string escape;  // a word of text/ValueEscapes.h
};

// The exit status: 0, or 1 when it failed. A failure is one line on `err` that begins with "zebctl: ".
int RunHistoryCommand(HistoryReader& reader, const HistoryOptions& options, std::string_view templateBytes,
                      const UtcOffsetOf& utcOffset, std::ostream& out, std::ostream& err);

}  // namespace zeb
