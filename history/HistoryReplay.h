// HistoryReplay: what a template would have shown in a span of the history.
#pragma once

#include <ostream>
#include <string>

#include "platform/HistoryStore.h"
#include "platform/Result.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

struct ReplayedTemplate {
  std::string text;
  std::string simpleText{};  // behind <ZEB_SIMPLETEXT>
  bool page = false;         // as the file output treats a page
  ValueEncoding values{};
};

// Expands it against each update of the filter's service and span, and writes what it gives, with the moment,
// whenever that is something else than before. Nothing is published. Fails when there is no update.
Outcome WriteReplay(HistoryReader& reader, const HistoryFilter& filter, const ReplayedTemplate& replayed,
                    std::ostream& out);

}  // namespace zeb
