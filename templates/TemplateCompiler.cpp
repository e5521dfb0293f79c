#include "templates/TemplateCompiler.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

#include "templates/FindConstruct.h"
#include "templates/PageChunks.h"

namespace zeb {
namespace {

// A text that has more is made to be a burden: as a program it would take many times its own size.
constexpr std::size_t kStepsAlways = 1000;
constexpr std::size_t kBytesPerStep = 16;

// With what follows, this might be the start of a tag.
bool EndsInsideTagStart(std::string_view text) {
  for (std::size_t length = 1; length < kTagStart.size(); ++length)
    if (text.ends_with(kTagStart.substr(0, length))) return true;
  return false;
}

// Compiles pieces of `full`, which is `text` with a header put in at `headerAt`. The program's views are into
// `text`.
class Compiler {
 public:
  Compiler(std::string_view text, std::string_view full, std::size_t headerAt)
      : text_(text),
        full_(full),
        headerAt_(headerAt),
        headerEnd_(headerAt + (full.size() - text.size())),
        maxSteps_(kStepsAlways + text.size() / kBytesPerStep) {}

  void AddPiece(std::string_view piece) {
    const std::size_t before = program_.steps.size();
    const TemplateStep last = before > 0 ? program_.steps.back() : TemplateStep();
    if (AddSections(piece)) return;
    program_.steps.resize(before);
    if (before > 0) program_.steps.back() = last;  // the piece may have lengthened it
    if (HoldsHeader(piece))
      headerFits_ = false;
    else
      AddStep({InText(piece), TemplateStep::kPiece});
  }

  std::optional<TemplateProgram> Take() {
    if (!headerFits_ || program_.steps.size() > maxSteps_) return std::nullopt;
    program_.steps.shrink_to_fit();
    return std::move(program_);
  }

 private:
  std::size_t OffsetOf(std::string_view part) const {
    return static_cast<std::size_t>(part.data() - full_.data());
  }
  bool HoldsHeader(std::string_view part) const {
    const std::size_t from = OffsetOf(part);
    return from < headerEnd_ && headerAt_ < from + part.size();
  }
  // The same part of the template; it does not hold the header.
  std::string_view InText(std::string_view part) const {
    const std::size_t from = OffsetOf(part);
    return text_.substr(from < headerEnd_ ? from : from - (headerEnd_ - headerAt_), part.size());
  }

  void AddStep(const TemplateStep& step) {
    if (program_.steps.size() <= maxSteps_) program_.steps.push_back(step);
  }

  void AddLiteral(std::string_view part) {
    if (part.empty()) return;
    if (HoldsHeader(part)) return AddLiteralAroundHeader(part);
    const std::string_view literal = InText(part);
    if (program_.steps.size() > closedSteps_) {
      TemplateStep& last = program_.steps.back();
      if (last.kind == TemplateStep::kLiteral && last.text.data() + last.text.size() == literal.data()) {
        last.text = {last.text.data(), last.text.size() + literal.size()};
        return;
      }
    }
    AddStep({literal, TemplateStep::kLiteral});
  }

  void AddLiteralAroundHeader(std::string_view part) {
    const std::size_t from = OffsetOf(part), end = from + part.size();
    if (from < headerAt_) AddLiteral(full_.substr(from, headerAt_ - from));
    // Of a header that is cut between two pieces, all comes with its start.
    if (from <= headerAt_) AddStep({{}, TemplateStep::kHeader});
    if (end > headerEnd_) AddLiteral(full_.substr(headerEnd_, end - headerEnd_));
  }

  // What the first pass does. False: the piece is not the sum of its parts.
  bool AddSections(std::string_view piece) {
    std::size_t from = 0;
    while (const auto section = FindSection(piece, from)) {
      if (!AddTags(piece.substr(from, section->open - from), false)) return false;
      if (!AddSection(piece.substr(section->open + 1, section->close - section->open - 1))) return false;
      from = std::min(section->close + 1, piece.size());
    }
    return AddTags(piece.substr(from), true);
  }

  bool AddSection(std::string_view content) {
    if (HoldsHeader(content)) return false;
    const std::optional<SectionCondition> condition = ParseSectionCondition(content);
    if (!condition) return AddTags(content, false);
    const std::size_t at = program_.steps.size();
    AddStep({{}, TemplateStep::kSection, ConditionNumber(*condition, content)});
    if (!AddTags(content.substr(condition->body), false)) return false;
    closedSteps_ = program_.steps.size();
    if (MayShowAll(*condition) && !AddTags(content, false)) return false;
    const std::size_t behindBody = std::exchange(closedSteps_, program_.steps.size());
    if (at < program_.steps.size()) {
      program_.steps[at].bodySteps = static_cast<std::uint32_t>(behindBody - at - 1);
      program_.steps[at].allSteps = static_cast<std::uint32_t>(closedSteps_ - behindBody);
    }
    return true;
  }

  // What the second pass does with a part of what the first one leaves. False: it goes on behind the part.
  bool AddTags(std::string_view part, bool isLast) {
    std::size_t from = 0;
    while (const auto tag = FindTag(part, from)) {
      if (tag->close == std::string_view::npos) return false;
      const std::string_view name = part.substr(tag->open + 1, tag->close - tag->open - 1);
      if (HoldsHeader(name)) return false;
      AddLiteral(part.substr(from, tag->open - from));
      AddStep({{}, TemplateStep::kValue, NameNumber(InText(name))});
      from = tag->close + 1;
    }
    AddLiteral(part.substr(from));
    return isLast || !EndsInsideTagStart(part);
  }

  std::uint32_t NameNumber(std::string_view name) {
    const auto [found, isNew] = names_.try_emplace(name, static_cast<std::uint32_t>(program_.names.size()));
    if (isNew) program_.names.push_back(name);
    return found->second;
  }

  // Two conditions are one when all before their bodies is; without a ")" that is all of the content.
  std::uint32_t ConditionNumber(const SectionCondition& condition, std::string_view content) {
    std::string_view head = InText(content);
    if (condition.body != 0) head = head.substr(0, condition.body);
    const auto [found, isNew] =
        conditions_.try_emplace(head, static_cast<std::uint32_t>(program_.conditions.size()));
    if (isNew) program_.conditions.push_back(*ParseSectionCondition(head));
    return found->second;
  }

  const std::string_view text_, full_;
  const std::size_t headerAt_, headerEnd_;
  const std::size_t maxSteps_;
  TemplateProgram program_;
  std::size_t closedSteps_ = 0;  // no literal joins one of these
  bool headerFits_ = true;
  std::unordered_map<std::string_view, std::uint32_t> names_, conditions_;
};

}  // namespace

bool IsHarmlessHeader(std::string_view header) {
  for (const std::string_view harm : {"[", "]", "<<"})
    if (header.find(harm) != std::string_view::npos) return false;
  return header.find(kTagStart) == std::string_view::npos;
}

TemplateProgram CompileText(std::string_view text) {
  Compiler compiler(text, text, text.size());
  compiler.AddPiece(text);
  if (std::optional<TemplateProgram> program = compiler.Take()) return std::move(*program);
  TemplateProgram general;
  general.steps.push_back({text, TemplateStep::kPiece});
  return general;
}

std::optional<TemplateProgram> CompilePage(std::string_view page, const HeaderInPage& header,
                                           std::size_t characters) {
  std::string withHeader;
  if (!header.text.empty())
    withHeader.append(page.substr(0, header.at)).append(header.text).append(page.substr(header.at));
  const std::string_view full = header.text.empty() ? page : std::string_view(withHeader);
  Compiler compiler(page, full, header.text.empty() ? page.size() : header.at);
  for (std::size_t from = 0; from < full.size();) {
    const std::size_t end = ChunkEnd(full, from, characters);
    compiler.AddPiece(full.substr(from, end - from));
    from = end;
  }
  return compiler.Take();
}

}  // namespace zeb
