// TemplateTextEdit: an edit box for a template. Marks tags, sections and faults while the person types, and
// deletes a tag as one unit.
//
// A text that is not changed comes back byte for byte; in one that is, all line ends become those of the
// first one that it came with (LF when it had none).
#pragma once

#include <QPlainTextEdit>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "dialogs/TemplateMarks.h"

namespace zeb {

class TemplateTextEdit : public QPlainTextEdit {
 public:
  explicit TemplateTextEdit(bool multiLine, QWidget* parent = nullptr);

  std::string Text() const;
  void SetText(const std::string& text);      // it counts as unchanged then
  void ReplaceText(const std::string& text);  // as if typed: can be undone
  void Insert(std::string_view text);         // in the place of the selection
  void ShowFault();                           // puts the caret to the bracket at fault, if any
  const TemplateMarks& Marks() const { return marks_; }

  std::function<void()> onChanged;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void insertFromMimeData(const QMimeData* source) override;
  void changeEvent(QEvent* event) override;

 private:
  std::string Shown() const;  // with LF for each line end, so that places in it are places in the box
  bool DeleteTag();
  void Changed();
  void DrawMarks(std::string_view shown);

  const bool multiLine_;
  std::string given_, lineEnd_;
  TemplateMarks marks_;
};

}  // namespace zeb
