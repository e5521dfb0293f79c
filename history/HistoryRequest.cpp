#include "history/HistoryRequest.h"

#include <limits>
#include <sstream>

#include "core/OutputName.h"
#include "history/HistoryListing.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr std::size_t kMostWordCharacters = 60;  // in a reason

Failure Wrong(const std::string& name, const char* takes, const std::string& value) {
  return Failure{name + " takes " + takes + ", not '" + OneLine(value, kMostWordCharacters) + "'"};
}

struct CountWord {
  const char* name;
  int most;
  const char* takes;
};
constexpr CountWord kCountWords[] = {
    {"service", std::numeric_limits<int>::max(), "the number of a service"},
    {"limit", HistoryRequest::kMostRows, "1 to 1000"},
    {"last", HistoryRequest::kMostLast, "1 to 100"},
};

int& CountOf(HistoryRequest& request, std::string_view name) {
  if (name == "service") return request.filter.service;
  return name == "last" ? request.last : request.most;
}

Outcome TakeCount(HistoryRequest& request, const CountWord& word, const std::string& value) {
  const std::optional<int> count = WholeNumber<int>(value);
  if (!count || *count < 1 || *count > word.most) return Wrong(word.name, word.takes, value);
  CountOf(request, word.name) = *count;
  return {};
}

Outcome TakeWord(HistoryRequest& request, const std::string& name, const std::string& value,
                 const UtcOffsetOf& utcOffset) {
  for (const CountWord& word : kCountWords)
    if (name == word.name) return TakeCount(request, word, value);
  if (name == "output") {
    const std::optional<std::string> output = ReadOutputName(value);
    if (!output) return Wrong(name, "an output such as File2", value);
    request.filter.output = *output;
  } else if (name == "from" || name == "to") {
    const std::optional<WrittenMoment> moment = ReadMomentText(value);
    if (!moment) return Wrong(name, "a moment, \"YYYY-MM-DD hh:mm[:ss]\" or RFC 3339", value);
    (name == "from" ? request.filter.from : request.filter.to) = MomentOf(*moment, utcOffset).utc;
  } else if (name == "songs") {
    if (value != "0" && value != "1") return Wrong(name, "0 or 1", value);
    request.songs = value == "1";
  } else {
    return Failure{"the history has no '" + OneLine(name, kMostWordCharacters) +
                   "'; it takes service, output, from, to, songs, limit and last"};
  }
  return {};
}

}  // namespace

std::optional<std::string> ReadOutputName(std::string_view text) {
  const Result<OutputName> name = ParseOutputName(text);
  return name ? std::optional(name.Value().Text()) : std::nullopt;
}

HistoryMoment MomentOf(const WrittenMoment& written, const UtcOffsetOf& utcOffset) {
  return {written.wall, written.utcOffset ? *written.utcOffset : utcOffset(written.wall)};
}

Result<HistoryRequest> ReadHistoryRequest(const std::vector<std::pair<std::string, std::string>>& words,
                                          const HistoryMoment& now, const UtcOffsetOf& utcOffset) {
  const HistoryFilter all;
  HistoryRequest request;
  for (const auto& [name, value] : words) {
    if (value.empty()) continue;
    if (const Outcome taken = TakeWord(request, name, value, utcOffset); !taken) return taken.AsFailure();
  }
  if (request.songs && !request.filter.output.empty()) return Failure{"songs does not go with output"};
  if (request.last > 0 && request.filter.service == 0) return Failure{"last needs a service"};
  constexpr std::int64_t kDay = std::chrono::milliseconds(std::chrono::hours(24)).count();
  HistoryFilter& filter = request.filter;
  if (filter.from == all.from) filter.from = (filter.to == all.to ? now.utc : filter.to) - kDay;
  return request;
}

Result<std::string> HistoryJson(HistoryReader& reader, const HistoryRequest& request) {
  std::ostringstream out;
  if (request.last > 0) {
    const Outcome done =
        WriteLastItems(reader, request.filter.service, HistoryForm::kJson, out, request.last);
    return done ? Result<std::string>(std::move(out).str()) : done.AsFailure();
  }
  const auto write = request.songs ? WriteSongs : WriteHistory;
  if (const Outcome done = write(reader, request.filter, HistoryForm::kJson, out, request.most); !done)
    return done.AsFailure();
  return std::move(out).str();
}

}  // namespace zeb
