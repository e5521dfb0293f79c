#include "history/HistoryWhy.h"

#include <algorithm>
#include <utility>

#include "history/HistoryCursor.h"
#include "history/HistoryForms.h"
#include "history/HistoryRecord.h"
#include "history/HistorySnapshots.h"

namespace zeb {
namespace {

constexpr std::size_t kMostLines = 15;     // of a template, and of what it gives
constexpr std::size_t kMostFailures = 10;  // that are told, the last ones

// Thrown to end a search whose store fails; its reason becomes the answer's.
struct CannotRead {
  Failure failure;
};

template <class T>
T Get(Result<T> result) {
  if (!result) throw CannotRead{result.AsFailure()};
  return std::move(result.Value());
}

template <class Cursor>
void CheckRead(const Cursor& cursor) {
  if (!cursor.outcome()) throw CannotRead{cursor.outcome().AsFailure()};
}

class Search {
 public:
  Search(HistoryReader& reader, int service, const std::string& output, std::int64_t utc)
      : reader_(reader), service_(service), output_(output), utc_(utc), snapshots_(reader) {}

  WhyAnswer All() {
    WhyAnswer answer;
    for (const std::string& part : Get(reader_.Parts(service_, output_))) answer.parts.push_back(Part(part));
    const auto item = Get(reader_.LastItem(service_, kHistoryCurrent, utc_));
    if (item) answer.station = item->serviceName;
    return answer;
  }

 private:
  WhyPart Part(const std::string& name) {
    WhyPart part;
    part.part = name;
    part.shown = Last(name, utc_);
    const std::int64_t since = part.shown ? part.shown->moment.utc : 0;
    part.since = Failures(name, part.shown ? since : std::numeric_limits<std::int64_t>::min(), utc_ + 1);
    if (!part.shown) return part;
    const auto earlier = Last(name, since - 1);
    part.before =
        Failures(name, earlier ? earlier->moment.utc : std::numeric_limits<std::int64_t>::min(), since);
    part.until = NextPublished(name);
    TellUpdate(part);
    return part;
  }

  std::optional<HistoryPublication> Last(const std::string& part, std::int64_t utc) {
    return Get(reader_.LastPublication(service_, output_, part, utc, HistoryResult::kPublished));
  }

  HistoryFilter Filter(std::int64_t from, std::int64_t to) const {
    HistoryFilter filter;
    filter.service = service_;
    filter.output = output_;
    filter.from = from;
    filter.to = to;
    return filter;
  }

  std::vector<WhyFailure> Failures(const std::string& part, std::int64_t from, std::int64_t to) {
    std::vector<WhyFailure> failures;
    auto rows = PublicationsOf(reader_, Filter(from, to));
    for (; const HistoryPublication* row = rows.Peek(); rows.Skip()) {
      if (row->part != part || row->problem.empty()) continue;
      if (failures.empty() || failures.back().problem != row->problem)
        failures.push_back({row->moment, row->moment, row->problem});
      failures.back().to = row->moment;
      if (failures.size() > kMostFailures) failures.erase(failures.begin());
    }
    CheckRead(rows);
    return failures;
  }

  std::optional<HistoryMoment> NextPublished(const std::string& part) {
    auto rows = PublicationsOf(reader_, Filter(utc_ + 1, std::numeric_limits<std::int64_t>::max()));
    std::optional<HistoryMoment> next;
    for (; const HistoryPublication* row = next ? nullptr : rows.Peek(); rows.Skip())
      if (row->part == part && row->problem.empty()) next = row->moment;
    CheckRead(rows);
    return next;
  }

  void TellUpdate(WhyPart& part) {
    const auto update = Get(reader_.FindUpdate(part.shown->update));
    if (!update) return;
    const SnapshotPtr snapshot = Get(snapshots_.Make(*update, part.shown->updateMoment));
    part.updateKnown = true;
    part.item = snapshot->currentItem;
    part.expanded = ExpandAgainst(*snapshot, part.shown->templateText, !part.shown->digest.empty(),
                                  part.shown->simpleText, EncodingOf(part.shown->encoding))
                        .value_or("(the page would be too large)");
    TellItem(part);
  }

  // When the item came that the update had as its current one, and what took its place.
  void TellItem(WhyPart& part) {
    const auto item = Get(reader_.LastItem(service_, kHistoryCurrent, part.shown->updateMoment.utc));
    if (!item || item->record != WriteItemRecord(part.item)) return;
    part.arrived = item->moment;
    part.itemSource = item->source;
    HistoryFilter later;
    later.service = service_;
    later.slot = kHistoryCurrent;
    const auto next = Get(reader_.Items(later, {item->moment.utc, item->id}, 1));
    if (!next.empty()) part.left = next[0].moment;
  }

  HistoryReader& reader_;
  int service_;
  const std::string& output_;
  std::int64_t utc_;
  HistorySnapshots snapshots_;
};

// ---- In words

std::string Indented(const std::string& text) {
  std::string indented;
  for (const char c : text) {
    if (c == '\r') continue;
    indented += c;
    if (c == '\n') indented += "            ";
  }
  indented.erase(indented.find_last_not_of(" \n") + 1);
  return indented;
}

void Line(std::ostream& out, const std::string& name, const std::string& text) {
  std::string label = "  " + name;
  label.resize(12, ' ');
  out << label << Indented(text) << '\n';
}

std::string ItemText(const WhyPart& part) {
  const clsZEBItemInfo& item = part.item;
  std::string text = item->ItemName.empty() ? "(none)" : item->ItemName;
  if (!item->Artists.empty()) text += " - " + item->Artists;
  if (const std::string_view type = ItemTypeText(item->ItemType); !type.empty())
    text.append(" (").append(type).append(")");
  return text;
}

void WriteShown(const WhyPart& part, std::ostream& out) {
  const HistoryPublication& shown = *part.shown;
  if (shown.digest.empty()) {
    Line(out, "shown", shown.text);
  } else {
    Line(out, "shown", std::to_string(shown.bytes) + " bytes, SHA-256 " + shown.digest);
    Line(out, "begins", shown.text);
  }
  std::string since = LocalMomentText(shown.moment);
  if (shown.latency) since += ", " + LatencyText(*shown.latency) + " ms after the information";
  Line(out, "since", since);
  Line(out, "until", part.until ? LocalMomentText(*part.until) : "now, as far as the history goes");
}

// A page is long, and most of it the same each time.
std::string Cut(const std::string& text, WhyLength length) {
  if (length == WhyLength::kAll) return text;
  std::size_t end = 0, lines = 0;
  while (lines < kMostLines && end < text.size()) {
    end = std::min(text.find('\n', end), text.size() - 1) + 1;
    ++lines;
  }
  const auto more = std::count(text.begin() + static_cast<std::ptrdiff_t>(end), text.end(), '\n') +
                    (end < text.size() && text.back() != '\n' ? 1 : 0);
  if (more == 0) return text;
  return text.substr(0, end) + "(" + std::to_string(more) + " more " + (more == 1 ? "line" : "lines") +
         ": --full)";
}

void WriteItem(const WhyPart& part, WhyLength length, std::ostream& out) {
  if (!part.updateKnown) {
    Line(out, "item", "not in the history");
    return;
  }
  Line(out, "item", ItemText(part));
  if (part.arrived)
    Line(out, "arrived",
         LocalMomentText(*part.arrived) + (part.itemSource.empty() ? "" : ", from " + part.itemSource));
  if (part.arrived) Line(out, "left", part.left ? LocalMomentText(*part.left) : "not yet");
  if (part.shown->templateText.empty()) {
    Line(out, "template", "not in the history");
    return;
  }
  Line(out, "template", Cut(part.shown->templateText, length));
  Line(out, "expanded", Cut(part.expanded, length));
}

void WriteFailures(const std::vector<WhyFailure>& failures, const std::string& name, std::ostream& out) {
  for (const WhyFailure& failure : failures) {
    std::string span = LocalMomentText(failure.from);
    if (failure.to != failure.from) span += " to " + LocalMomentText(failure.to);
    Line(out, name, span + ": " + failure.problem);
  }
}

}  // namespace

Result<WhyAnswer> AskWhy(HistoryReader& reader, int service, const std::string& output, std::int64_t utc) {
  try {
    WhyAnswer answer = Search(reader, service, output, utc).All();
    if (!answer.parts.empty()) return answer;
    std::string known;
    for (const std::string& name : Get(reader.Outputs(service))) known += (known.empty() ? "" : ", ") + name;
    return Failure{"the history knows no output " + output + " of service " + std::to_string(service) +
                   (known.empty() ? "" : "; it knows " + known)};
  } catch (const CannotRead& error) {
    return error.failure;
  }
}

void WriteWhy(const WhyAnswer& answer, int service, const std::string& output, const HistoryMoment& moment,
              std::ostream& out, WhyLength length) {
  const std::string station = answer.station.empty() ? "" : " (" + answer.station + ")";
  for (const WhyPart& part : answer.parts) {
    out << "Service " << service << station << ", " << output << (part.part.empty() ? "" : " " + part.part)
        << ", at " << LocalMomentText(moment) << '\n';
    if (part.shown) {
      WriteShown(part, out);
      WriteItem(part, length, out);
    } else {
      Line(out, "shown", "nothing had been published");
    }
    WriteFailures(part.before, "before", out);
    WriteFailures(part.since, "failing", out);
  }
  out.flush();
}

}  // namespace zeb
