#include "app/desktop/dialogs/TemplateHighlighter.h"

#include <QTextBlock>
#include <algorithm>

#include "app/desktop/dialogs/Utf16Carets.h"

namespace zeb {
namespace {

QTextCharFormat FormatOf(MarkKind kind, const QPalette& palette) {
  QTextCharFormat format;
  switch (kind) {
    case MarkKind::kTag:
      format.setForeground(palette.color(QPalette::Link));
      break;
    case MarkKind::kSection:
    case MarkKind::kCondition:
      format.setFontWeight(QFont::Bold);
      break;
    case MarkKind::kUnknown:
      format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
      format.setUnderlineColor(palette.color(QPalette::Text));
      break;
    case MarkKind::kUnmatched:
      format.setForeground(palette.color(QPalette::HighlightedText));
      format.setBackground(palette.color(QPalette::Highlight));
      format.setUnderlineStyle(QTextCharFormat::SingleUnderline);
      break;
  }
  return format;
}

// From the bottom up.
constexpr MarkKind kOrder[] = {MarkKind::kCondition, MarkKind::kSection, MarkKind::kTag, MarkKind::kUnknown,
                               MarkKind::kUnmatched};

}  // namespace

void TemplateHighlighter::Draw(std::string_view text, const std::vector<TemplateMark>& marks,
                               const QPalette& palette) {
  if (marks.empty() && ranges_.empty()) return;
  ranges_.clear();
  for (const MarkKind kind : kOrder) {
    Utf16Carets carets(text);
    const QTextCharFormat format = FormatOf(kind, palette);
    for (const TemplateMark& mark : marks) {
      if (mark.kind != kind) continue;
      const int start = carets.At(mark.start);
      ranges_.push_back({start, carets.At(mark.start + mark.length), format});
    }
  }
  rehighlight();
}

void TemplateHighlighter::highlightBlock(const QString& line) {
  const int first = currentBlock().position();
  const int end = first + static_cast<int>(line.size());
  for (const Range& range : ranges_) {
    const int from = std::max(range.start, first), to = std::min(range.end, end);
    if (from < to) setFormat(from - first, to - from, range.format);
  }
}

}  // namespace zeb
