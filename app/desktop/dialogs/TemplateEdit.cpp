#include "app/desktop/dialogs/TemplateEdit.h"

#include <QGridLayout>
#include <QPointer>
#include <QPushButton>
#include <utility>

#include "app/desktop/dialogs/TemplateResult.h"
#include "app/desktop/dialogs/TemplateTextEdit.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

TemplateEdit::TemplateEdit(Desk& desk, ServicePtr window, bool multiLine)
    : desk_(desk),
      window_(std::move(window)),
      edit_(new TemplateTextEdit(multiLine)),
      result_(new TemplateResult(desk, window_, *edit_)) {
  // One of many fields: a few lines, and the rest by scrolling or in the builder.
  if (multiLine)
    edit_->setFixedHeight(4 * edit_->fontMetrics().lineSpacing() + 2 * edit_->frameWidth() +
                          static_cast<int>(2 * edit_->document()->documentMargin()));
  auto* build = new QPushButton(T("Build..."));
  build->setAutoDefault(false);
  connect(edit_, &QObject::objectNameChanged, build,
          [build](const QString& name) { build->setObjectName("Build" + name); });
  connect(build, &QPushButton::clicked, this, [this] { Build(); });
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(edit_, 0, 0);
  layout->addWidget(build, 0, 1, Qt::AlignTop);
  layout->addWidget(result_, 1, 0, 1, 2);
  setFocusProxy(edit_);
  edit_->onChanged = [this] {
    result_->Edited();
    if (onChanged) onChanged();
  };
}

std::string TemplateEdit::Text() const {
  return edit_->Text();
}

void TemplateEdit::SetText(const std::string& text) {
  edit_->SetText(text);
}

QWidget* TemplateEdit::Input() const {
  return edit_;
}

void TemplateEdit::Build() {
  OpenFormatCreator(desk_, window(), window_, Text(), [self = QPointer(this)](const std::string& text) {
    if (!self || text == self->Text()) return;
    self->edit_->ReplaceText(text);
    self->edit_->setFocus();
  });
}

}  // namespace zeb
