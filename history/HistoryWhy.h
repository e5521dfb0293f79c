// HistoryWhy: what an output showed at a moment, and why: for whoever is asked "what did it say at 08:14?"
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "core/clsZEBItemInfo.h"
#include "platform/HistoryStore.h"
#include "platform/Result.h"

namespace zeb {

// A failure that lasted: the same reason, told once.
struct WhyFailure {
  HistoryMoment from, to;
  std::string problem;
};

// Of one part of the output (a page), at the moment.
struct WhyPart {
  std::string part;
  std::optional<HistoryPublication> shown;  // nothing: none was published by then
  std::optional<HistoryMoment> until;       // when something else was published
  std::vector<WhyFailure> before;           // what failed between the publication before and this one
  std::vector<WhyFailure> since;            // what failed between this one and the moment

  // Of the update that it shows; nothing when that is not in the history (any more).
  bool updateKnown = false;
  clsZEBItemInfo item;
  std::string itemSource;
  std::optional<HistoryMoment> arrived, left;  // of the item
  std::string expanded;                        // the template, against what was known then
};

struct WhyAnswer {
  std::string station;  // its name then; "" when that is not known
  std::vector<WhyPart> parts;
};

// Fails when the history knows no such output; the reason then says which it knows.
Result<WhyAnswer> AskWhy(HistoryReader& reader, int service, const std::string& output, std::int64_t utc);

// Of templates and what they give, the first lines only, unless all of it is wanted.
enum class WhyLength { kFirstLines, kAll };
void WriteWhy(const WhyAnswer& answer, int service, const std::string& output, const HistoryMoment& moment,
              std::ostream& out, WhyLength length = WhyLength::kFirstLines);

}  // namespace zeb
