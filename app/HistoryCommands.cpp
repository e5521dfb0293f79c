#include "app/HistoryCommands.h"

#include <algorithm>

#include "app/CommandLine.h"
#include "history/HistoryListing.h"
#include "history/HistoryReplay.h"
#include "history/HistoryWhy.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

HistoryMoment MomentOf(const WrittenMoment& written, const UtcOffsetOf& utcOffset) {
  return {written.wall, written.utcOffset ? *written.utcOffset : utcOffset(written.wall)};
}

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
  HistoryMoment at = MomentOf(options.at, utcOffset);
  const Result<WhyAnswer> answer = AskWhy(reader, options.service, options.output, at.utc);
  if (!answer) return answer;
  WriteWhy(answer.Value(), options.service, options.output, at, out);
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

std::optional<std::string> ReadOutputName(std::string_view text) {
  const std::size_t digits = text.find_first_of("0123456789");
  if (digits == std::string_view::npos || text[digits] == '0') return std::nullopt;
  const auto number = WholeNumber<int>(text.substr(digits));
  if (!number) return std::nullopt;
  for (const OutputTypeInfo& info : kOutputTypes)
    if (EqualIgnoringAsciiCase(text.substr(0, digits), info.name))
      return std::string(info.name) + std::to_string(*number);
  return std::nullopt;
}

int RunHistoryCommand(HistoryReader& reader, const HistoryOptions& options, std::string_view templateBytes,
                      const UtcOffsetOf& utcOffset, std::ostream& out, std::ostream& err) {
  const Outcome done = Run(reader, options, templateBytes, utcOffset, out);
  if (done && out) return 0;
  err << "zebctl: " << (done ? "cannot write to standard output" : done.Reason()) << std::endl;
  return 1;
}

}  // namespace zeb
