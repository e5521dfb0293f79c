#include "dialogs/TemplateLint.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "dialogs/TemplateMarks.h"
#include "templates/FindConstruct.h"
#include "templates/SectionCondition.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Composed.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/OneLine.h"
#include "text/Utf8.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

constexpr std::size_t kMostShownCharacters = 30;

std::string Shown(std::string_view text) {
  return OneLine(text, kMostShownCharacters);
}

// Where the bytes of `text`, of which UndoEscapedTags made `undone`, stand: "&lt;" became "<" and so on, so
// the two differ exactly where an escape stood.
class OriginalPlaces {
 public:
  OriginalPlaces(std::string_view text, std::string_view undone) : text_(text), undone_(undone) {}

  // Offsets are asked for in ascending order.
  std::size_t Of(std::size_t offset) {
    for (; here_ < offset && here_ < undone_.size(); ++here_)
      there_ += text_[there_] == undone_[here_] ? 1 : text_[there_] == '&' ? 4 : 3;
    return there_;
  }

 private:
  const std::string_view text_, undone_;
  std::size_t here_ = 0, there_ = 0;
};

class Linter {
 public:
  Linter(std::string_view bytes, std::string_view name, std::string_view escape)
      : bytes_(bytes),
        encoding_(DetectFileEncoding(bytes)),
        text_(DecodeFile(bytes, encoding_)),
        page_(UndoEscapedTags(text_)),
        kind_(EscapeFor("auto", name, page_)),
        escape_(EscapeFor(escape, name, page_)) {}

  std::vector<LintFinding> Lint() && {
    LookAtEncoding();
    for (const TemplateRemark& remark : RemarksOf(page_, kMostFindings))
      Add(remark.at, Composed(remark.text, {Shown(remark.what)}));
    LookAtSections();
    LookAtEscapes();
    if (kind_ == ValueEscape::kHtml) LookAtScripts();
    return Placed();
  }

 private:
  void Add(std::size_t at, std::string text) { found_.emplace_back(at, std::move(text)); }

  void LookAtEncoding() {
    const bool utf8 = IsValidUtf8(bytes_);
    const bool plain = std::all_of(bytes_.begin(), bytes_.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    const bool oneByte =
        encoding_.kind == FileEncoding::kWindows1252 || encoding_.kind == FileEncoding::kIso8859_1;
    if (encoding_.kind == FileEncoding::kUtf8 && !utf8)
      Add(0, "the file says that it is UTF-8, but not all of it is: those bytes are read as Windows-1252");
    else if (oneByte && utf8 && !plain)
      Add(0, "the file is UTF-8, but says that it is not: its letters with accents are published wrongly");
    else if (oneByte && encoding_.markup && !utf8 && encoding_.kind == FileEncoding::kWindows1252)
      Add(0, "the page is published in Windows-1252: letters beyond that become &#NNNN;; UTF-8 has all");
  }

  // ---- Brackets

  // As the first pass goes through the text; what it passes over cannot close anything.
  void LookAtSections() {
    std::size_t from = 0, guarded = 0;
    for (;;) {
      const auto section = FindSection(page_, from);
      const std::size_t end = section ? section->open : page_.size();
      LookAtPlain(from, end, guarded);
      if (!section) return;
      LookAtSection(*section);
      from = section->close + 1;
      if (from >= page_.size()) return;
    }
  }

  // Text outside of sections. Who writes "[[" means a bracket, and its end stands somewhere behind it.
  void LookAtPlain(std::size_t from, std::size_t end, std::size_t& guarded) {
    for (std::size_t at = from; at < end; ++at) {
      if (page_.compare(at, 2, "[[") == 0 && at + 1 < end) {
        ++guarded;
        ++at;
      } else if (page_[at] == ']' && guarded > 0) {
        --guarded;
      } else if (page_[at] == ']') {
        Add(at, "']' without a matching '[': it is published as it stands");
      }
    }
  }

  void LookAtSection(const FoundConstruct& section) {
    const std::string_view content =
        std::string_view(page_).substr(section.open + 1, section.close - section.open - 1);
    const bool open = section.close == page_.size();
    if (open) Add(section.open, "'[' without a matching ']': the section reaches to the end of the template");
    if (const std::size_t inner = content.find('['); inner != std::string_view::npos && !open)
      Add(section.open + 1 + inner,
          "'[' inside another section: sections cannot be nested, and the first ']' ends the outer one");
    if (!ParseSectionCondition(content) && !open)
      Add(section.open, "brackets without a condition are left out: '[" + Shown(content) + "]' becomes '" +
                            Shown(content) +
                            "'; in scripts and style sheets that changes what they do, so keep those in "
                            "files of their own");
  }

  // ---- Values

  std::optional<std::size_t> FirstValue(std::size_t from, std::size_t end) const {
    const auto tag = FindTag(page_, from);
    if (!tag || tag->open >= end) return std::nullopt;
    return tag->open;
  }

  void LookAtEscapes() {
    if (kind_ == ValueEscape::kNone || escape_ == kind_) return;
    const auto tag = FirstValue(0, page_.size());
    if (!tag) return;
    const std::string name(NameOf(kind_));
    Add(*tag, escape_ == ValueEscape::kNone
                  ? "values are put in as they are: a title such as 'A & \"B\" <C>' breaks the " + name +
                        "; set EscapeValues of the page to auto, and lint it with --escape auto"
                  : "values are escaped for " + std::string(NameOf(escape_)) + ", but this is " + name);
  }

  static std::string_view NameOf(ValueEscape escape) {
    static constexpr std::array<std::string_view, 4> kNames = {"nothing", "HTML", "XML", "JSON"};
    return kNames[static_cast<std::size_t>(escape)];
  }

  void LookAtScripts() {
    for (std::size_t from = 0;;) {
      const std::size_t script = FindIgnoringAsciiCase(page_, "<script", from);
      if (script == std::string::npos) return;
      const std::size_t end = std::min(FindIgnoringAsciiCase(page_, "</script", script), page_.size());
      if (const auto tag = FirstValue(script + 1, end))
        Add(*tag,
            "a value inside <script>: entities mean nothing there, and without them a quote in a title "
            "ends the string; let the script fetch a JSON page");
      from = end;
      if (from == page_.size()) return;
    }
  }

  // ---- Places

  std::vector<LintFinding> Placed() {
    std::stable_sort(found_.begin(), found_.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    if (found_.size() > kMostFindings) found_.resize(kMostFindings);
    std::vector<LintFinding> placed;
    OriginalPlaces places(text_, page_);
    std::size_t lineStart = 0, counted = 0;
    int line = 1;
    for (auto& [at, text] : found_) {
      const std::size_t original = places.Of(at);
      for (; counted < original; ++counted)
        if (text_[counted] == '\n') {
          ++line;
          lineStart = counted + 1;
        }
      const auto before = CountCharacters(std::string_view(text_).substr(lineStart, original - lineStart));
      placed.push_back({line, static_cast<int>(before) + 1, std::move(text)});
    }
    return placed;
  }

  const std::string_view bytes_;
  const FileEncoding encoding_;
  const std::string text_;  // of the file
  const std::string page_;  // with the tags that editors escape
  const ValueEscape kind_, escape_;
  std::vector<std::pair<std::size_t, std::string>> found_;  // by offset in `page_`
};

}  // namespace

std::vector<LintFinding> LintTemplate(std::string_view bytes, std::string_view name,
                                      std::string_view escape) {
  return Linter(bytes, name, escape).Lint();
}

}  // namespace zeb
