// TemplateEdit: the field in which a dialog offers a template: the text with its tags and faults marked, what
// it would become with the present item, and a button that opens the template builder.
//
// The text comes back byte for byte as it was given while nobody has changed it.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

#include "app/desktop/dialogs/Dialogs.h"

namespace zeb {

class TemplateResult;
class TemplateTextEdit;

class TemplateEdit : public QWidget {
 public:
  // `window` gives the items for the result; null: a sample song. Not multi-line: one line high, and the
  // return key is the dialog's.
  TemplateEdit(Desk& desk, ServicePtr window, bool multiLine);

  std::string Text() const;
  void SetText(const std::string& text);
  // What takes the keys, to be named after the setting and its caption; also this widget's focus proxy.
  QWidget* Input() const;

  std::function<void()> onChanged;  // by the person or by SetText

 private:
  void Build();

  Desk& desk_;
  const ServicePtr window_;
  TemplateTextEdit* edit_;
  TemplateResult* result_;
};

}  // namespace zeb
