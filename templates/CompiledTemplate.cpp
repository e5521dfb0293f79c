#include "templates/CompiledTemplate.h"

#include <utility>
#include <vector>

#include "templates/TagValues.h"
#include "templates/TemplateExpander.h"

namespace zeb {
namespace {

// One expansion by a program.
class Run {
 public:
  Run(const TemplateProgram& program, TagValues& tags, std::string_view header, std::string& to)
      : program_(program),
        tags_(tags),
        general_(tags),
        header_(header),
        to_(to),
        values_(program.names.size()),
        shown_(program.conditions.size()) {}

  void Steps(const TemplateStep* step, const TemplateStep* end) {
    while (step != end && to_.size() <= kMaxPageBytes) {
      switch (step->kind) {
        case TemplateStep::kLiteral:
          to_.append(step->text);
          break;
        case TemplateStep::kValue:
          to_.append(Value(step->index));
          break;
        case TemplateStep::kSection:
          step = Section(step);
          continue;
        case TemplateStep::kHeader:
          to_.append(header_);
          break;
        case TemplateStep::kPiece:
          general_.Append(step->text, to_);
          break;
      }
      ++step;
    }
  }

 private:
  const TemplateStep* Section(const TemplateStep* section) {
    const TemplateStep* const body = section + 1;
    const TemplateStep* const all = body + section->bodySteps;
    const TemplateStep* const behind = all + section->allSteps;
    std::optional<ShownPart>& shown = shown_[section->index];
    if (!shown) shown = Evaluate(program_.conditions[section->index], tags_.Snapshot());
    if (*shown == ShownPart::kBody) Steps(body, all);
    if (*shown == ShownPart::kAll) Steps(all, behind);
    return behind;
  }

  const std::string& Value(std::uint32_t index) {
    std::optional<std::string>& value = values_[index];
    if (!value) tags_.Append(program_.names[index], value.emplace());
    return *value;
  }

  const TemplateProgram& program_;
  TagValues& tags_;
  TemplateExpander general_;
  const std::string_view header_;
  std::string& to_;
  std::vector<std::optional<std::string>> values_;  // by the program's numbers
  std::vector<std::optional<ShownPart>> shown_;
};

}  // namespace

CompiledTemplate::CompiledTemplate(Text text, std::optional<TemplateProgram> program, std::size_t headerAt,
                                   std::size_t characters)
    : text_(std::move(text)), program_(std::move(program)), headerAt_(headerAt), characters_(characters) {}

std::shared_ptr<const CompiledTemplate> CompiledTemplate::OfText(Text text) {
  std::optional<TemplateProgram> program = CompileText(*text);
  return std::shared_ptr<const CompiledTemplate>(
      new CompiledTemplate(std::move(text), std::move(program), std::string::npos, 0));
}

std::shared_ptr<const CompiledTemplate> CompiledTemplate::OfPage(Text page, const HeaderInPage& header,
                                                                 std::size_t characters) {
  std::optional<TemplateProgram> program = CompilePage(*page, header, characters);
  return std::shared_ptr<const CompiledTemplate>(
      new CompiledTemplate(std::move(page), std::move(program), header.at, characters));
}

std::optional<std::string> CompiledTemplate::Expand(const ServiceSnapshot& snapshot,
                                                    std::string_view simpleText, UploadFileList& uploadFiles,
                                                    ValueEncoding values, std::string_view header) const {
  std::string expanded;
  const std::size_t last = lastSize_.load(std::memory_order_relaxed);
  expanded.reserve(last > 0 ? last + last / 16 : text_->size() + header.size());
  TagValues tags(snapshot, simpleText, uploadFiles, values);
  if (program_)
    Run(*program_, tags, header, expanded)
        .Steps(program_->steps.data(), program_->steps.data() + program_->steps.size());
  else
    ExpandGenerally(tags, header, expanded);
  if (expanded.size() > kMaxPageBytes) return std::nullopt;
  lastSize_.store(expanded.size(), std::memory_order_relaxed);
  return expanded;
}

void CompiledTemplate::ExpandGenerally(TagValues& tags, std::string_view header, std::string& to) const {
  TemplateExpander expander(tags);
  if (headerAt_ == std::string::npos) return expander.AppendPage(*text_, characters_, to);
  std::string page = *text_;
  page.insert(headerAt_, header);
  expander.AppendPage(page, characters_, to);
}

std::size_t CompiledTemplate::Bytes() const {
  return sizeof *this + (program_ ? program_->Bytes() : 0);
}

}  // namespace zeb
