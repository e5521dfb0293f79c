#include "history/HistoryReplay.h"

#include <optional>

#include "history/HistoryCursor.h"
#include "history/HistoryForms.h"
#include "history/HistorySnapshots.h"

namespace zeb {
namespace {

// A text of one line stands behind its moment; one of several, below it.
void Write(std::ostream& out, const HistoryMoment& moment, const std::string& text) {
  out << LocalMomentText(moment);
  if (text.find('\n') == std::string::npos)
    out << "  " << text << '\n';
  else
    out << '\n' << text << (text.back() == '\n' ? "" : "\n");
}

}  // namespace

Outcome WriteReplay(HistoryReader& reader, const HistoryFilter& filter, const ReplayedTemplate& replayed,
                    std::ostream& out) {
  HistoryCursor<HistoryReader::Update> updates = UpdatesOf(reader, filter);
  HistorySnapshots snapshots(reader);
  std::optional<std::string> shown;
  while (const HistoryReader::Update* update = updates.Peek()) {
    const Result<SnapshotPtr> snapshot = snapshots.Make(*update, update->moment);
    if (!snapshot) return snapshot;
    const std::string text =
        ExpandAgainst(*snapshot.Value(), replayed.text, replayed.page, replayed.simpleText, replayed.values)
            .value_or("(the page would be too large)");
    if (text != shown) Write(out, update->moment, text);
    shown = text;
    updates.Skip();
  }
  if (!updates.outcome()) return updates.outcome();
  out.flush();
  if (!shown)
    return Failure{"the history has no update of service " + std::to_string(filter.service) +
                   " in that span"};
  return {};
}

}  // namespace zeb
