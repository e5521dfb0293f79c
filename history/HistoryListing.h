// HistoryListing: what was on air and what was shown, line by line, and the songs that were played.
#pragma once

#include <limits>
#include <ostream>

#include "history/HistoryForms.h"
#include "platform/HistoryStore.h"
#include "platform/Result.h"

namespace zeb {

// Of both: at most `most` rows, the first ones.
inline constexpr int kAllRows = std::numeric_limits<int>::max();

// Items and publications together, in the order of time; only the publications when the filter names an
// output.
Outcome WriteHistory(HistoryReader& reader, const HistoryFilter& filter, HistoryForm form, std::ostream& out,
                     int most = kAllRows);

// What was current at a service, the newest first.
Outcome WriteLastItems(HistoryReader& reader, int service, HistoryForm form, std::ostream& out, int most);

// Each song that was the current item, for music reporting. Its fields about copyright come first, those of
// the item where they are empty. Its length is the one that the item has, else until another item was
// current. A song that was sent again while it was on is one.
Outcome WriteSongs(HistoryReader& reader, const HistoryFilter& filter, HistoryForm form, std::ostream& out,
                   int most = kAllRows);

}  // namespace zeb
