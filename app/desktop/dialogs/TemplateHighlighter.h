// TemplateHighlighter: draws a template's marks into its document. Where marks lie over each other the later
// kind counts: a tag in a condition is drawn as a tag, what is wrong above all.
#pragma once

#include <QPalette>
#include <QSyntaxHighlighter>
#include <string_view>
#include <vector>

#include "dialogs/TemplateMarks.h"

namespace zeb {

class TemplateHighlighter : public QSyntaxHighlighter {
 public:
  explicit TemplateHighlighter(QTextDocument* document) : QSyntaxHighlighter(document) {}

  // `text` is the document's, with LF for each line end.
  void Draw(std::string_view text, const std::vector<TemplateMark>& marks, const QPalette& palette);

 protected:
  void highlightBlock(const QString& line) override;

 private:
  struct Range {
    int start, end;  // carets
    QTextCharFormat format;
  };
  std::vector<Range> ranges_;  // in the order of drawing
};

}  // namespace zeb
