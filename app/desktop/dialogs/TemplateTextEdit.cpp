#include "app/desktop/dialogs/TemplateTextEdit.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>
#include <QTextDocument>
#include <optional>

#include "app/desktop/dialogs/Utf16Carets.h"
#include "dialogs/TemplateBuilder.h"

namespace zeb {
namespace {

QString FromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string FirstLineEnd(const std::string& text) {
  const std::size_t at = text.find_first_of("\r\n");
  if (at == std::string::npos || text[at] == '\n') return "\n";
  return text.compare(at, 2, "\r\n") == 0 ? "\r\n" : "\r";
}

QTextCharFormat FormatOf(MarkKind kind, const QPalette& palette) {
  QTextCharFormat format;
  switch (kind) {
    case MarkKind::kTag:
      format.setForeground(palette.color(QPalette::Link));
      break;
    case MarkKind::kSection:
    case MarkKind::kCondition:
      format.setForeground(palette.color(QPalette::LinkVisited));
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

}  // namespace

TemplateTextEdit::TemplateTextEdit(bool multiLine, QWidget* parent)
    : QPlainTextEdit(parent), multiLine_(multiLine), lineEnd_("\n") {
  setTabChangesFocus(true);  // in a dialog the key goes to the next field; a tab can be pasted
  if (!multiLine) {
    setLineWrapMode(NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const QMargins margins = contentsMargins();
    const int frame = 2 * frameWidth() + static_cast<int>(2 * document()->documentMargin());
    setFixedHeight(fontMetrics().lineSpacing() + frame + margins.top() + margins.bottom());
  }
  connect(this, &QPlainTextEdit::textChanged, this, [this] { Changed(); });
}

std::string TemplateTextEdit::Shown() const {
  QString text = document()->toRawText();
  text.replace(QChar::ParagraphSeparator, QChar('\n'));
  return text.toStdString();
}

std::string TemplateTextEdit::Text() const {
  if (!document()->isModified()) return given_;
  const std::string shown = Shown();
  if (lineEnd_ == "\n") return shown;
  std::string text;
  for (const char c : shown) {
    if (c == '\n')
      text += lineEnd_;
    else
      text += c;
  }
  return text;
}

void TemplateTextEdit::SetText(const std::string& text) {
  given_ = text;
  lineEnd_ = FirstLineEnd(text);
  setPlainText(FromUtf8(text));
  document()->setModified(false);
}

void TemplateTextEdit::ReplaceText(const std::string& text) {
  lineEnd_ = FirstLineEnd(text);
  QTextCursor all(document());
  all.select(QTextCursor::Document);
  all.insertText(FromUtf8(text));
}

void TemplateTextEdit::Insert(std::string_view text) {
  insertPlainText(FromUtf8(text));
  ensureCursorVisible();
}

void TemplateTextEdit::ShowFault() {
  const std::string shown = Shown();
  const std::optional<SectionFault> fault = FindSectionFault(shown);
  if (!fault) return;
  QTextCursor caret = textCursor();
  caret.setPosition(Utf16Carets(shown).At(fault->at));
  setTextCursor(caret);
  ensureCursorVisible();
}

void TemplateTextEdit::keyPressEvent(QKeyEvent* event) {
  const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  if (event->key() == Qt::Key_Backspace && plain && DeleteTag()) return event->accept();
  const bool lineEnd = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!multiLine_ && lineEnd) return event->ignore();  // the dialog's default button
  QPlainTextEdit::keyPressEvent(event);
}

bool TemplateTextEdit::DeleteTag() {
  QTextCursor caret = textCursor();
  if (isReadOnly() || caret.hasSelection() || document()->characterAt(caret.position() - 1) != QChar('>'))
    return false;
  const std::string shown = Shown();
  const std::optional<std::size_t> from = TagBeforeCaret(shown, ByteOffset(shown, caret.position()));
  if (!from) return false;
  caret.setPosition(Utf16Carets(shown).At(*from), QTextCursor::KeepAnchor);
  caret.removeSelectedText();
  setTextCursor(caret);
  return true;
}

void TemplateTextEdit::insertFromMimeData(const QMimeData* source) {
  if (!source->hasText()) return;
  QString text = source->text();
  if (!multiLine_) text = text.trimmed().replace("\r\n", " ").replace('\n', ' ').replace('\r', ' ');
  insertPlainText(text);
  ensureCursorVisible();
}

void TemplateTextEdit::changeEvent(QEvent* event) {
  QPlainTextEdit::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !marks_.marks.empty()) DrawMarks(Shown());
}

void TemplateTextEdit::Changed() {
  const std::string shown = Shown();
  marks_ = MarkTemplate(shown);
  DrawMarks(shown);
  if (onChanged) onChanged();
}

// As extra selections: they are no change of the text, and cannot be undone.
void TemplateTextEdit::DrawMarks(std::string_view shown) {
  QList<QTextEdit::ExtraSelection> selections;
  Utf16Carets carets(shown);
  for (const TemplateMark& mark : marks_.marks) {
    QTextEdit::ExtraSelection selection;
    selection.cursor = QTextCursor(document());
    selection.cursor.setPosition(carets.At(mark.start));
    selection.cursor.setPosition(carets.At(mark.start + mark.length), QTextCursor::KeepAnchor);
    selection.format = FormatOf(mark.kind, palette());
    selections.append(selection);
  }
  setExtraSelections(selections);
}

}  // namespace zeb
