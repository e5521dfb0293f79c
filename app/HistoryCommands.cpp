#include "app/HistoryCommands.h"

#include <algorithm>

#include "history/HistoryListing.h"
#include "history/HistoryReplay.h"
#include "history/HistoryWhy.h"
#include "text/Encodings.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

HistoryFilter FilterOf(const HistoryOptions& options, const UtcOffsetOf& utcOffset) {
  HistoryFilter filter;
  filter.service = options.service;
  filter.output = options.output;
  if (options.from) filter.from = MomentOf(*options.from, utcOffset).utc;
  if (options.to) filter.to = MomentOf(*options.to, utcOffset).utc;
  return filter;
}

Outcome Why(HistoryReader& reader, const HistoryOptions& options, const UtcOffsetOf& utcOffset,
            std::ostream& out) {
  const HistoryMoment at = MomentOf(options.at, utcOffset);
  const Result<WhyAnswer> answer = AskWhy(reader, options.service, options.output, at.utc);
  if (!answer) return answer;
  WriteWhy(answer.Value(), options.service, options.output, at, out,
           options.full ? WhyLength::kAll : WhyLength::kFirstLines);
  return {};
}

Outcome Replay(HistoryReader& reader, const HistoryOptions& options, std::string_view templateBytes,
               const UtcOffsetOf& utcOffset, std::ostream& out) {
  ReplayedTemplate replayed;
  replayed.text = options.page ? DecodeFile(templateBytes, DetectFileEncoding(templateBytes))
                               : DecodeLenient(templateBytes);
  replayed.simpleText = options.simpleText;
  replayed.page = options.page;
  replayed.values.urlEncode = options.urlEncode;
  replayed.values.escape = EscapeFor(options.escape, options.templateFile, replayed.text);
  return WriteReplay(reader, FilterOf(options, utcOffset), replayed, out);
}

Outcome Run(HistoryReader& reader, const HistoryOptions& options, std::string_view templateBytes,
            const UtcOffsetOf& utcOffset, std::ostream& out) {
  switch (options.action) {
    case HistoryOptions::Action::kList:
      return WriteHistory(reader, FilterOf(options, utcOffset), options.form, out);
    case HistoryOptions::Action::kSongs:
      return WriteSongs(reader, FilterOf(options, utcOffset), options.form, out);
    case HistoryOptions::Action::kWhy:
      return Why(reader, options, utcOffset, out);
    case HistoryOptions::Action::kReplay:
      return Replay(reader, options, templateBytes, utcOffset, out);
  }
  return {};
}

}  // namespace

int RunHistoryCommand(HistoryReader& reader, const HistoryOptions& options, std::string_view templateBytes,
                      const UtcOffsetOf& utcOffset, std::ostream& out, std::ostream& err) {
  const Outcome done = Run(reader, options, templateBytes, utcOffset, out);
  if (done && out) return 0;
  err << "zebctl: " << (done ? "cannot write to standard output" : done.Reason()) << std::endl;
  return 1;
}

}  // namespace zeb
