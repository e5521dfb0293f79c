#include "app/desktop/dialogs/TemplateResult.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <utility>

#include "app/desktop/dialogs/TemplateTextEdit.h"
#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

QLabel* PlainLabel(const char* name) {
  auto* label = new QLabel;
  label->setObjectName(name);
  label->setTextFormat(Qt::PlainText);  // titles are no markup
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setFocusPolicy(Qt::NoFocus);
  return label;
}

QString RemarkText(const TemplateRemark& remark) {
  QString text = T(remark.text);
  if (text.contains("%1")) text = text.arg(QString::fromStdString(remark.what));
  return QString(remark.fault ? "▲ " : "△ ") + T("line %1").arg(remark.line) + ": " + text;
}

}  // namespace

TemplateResult::TemplateResult(Desk& desk, ServicePtr window, const TemplateTextEdit& edit, bool offersItems)
    : desk_(desk),
      window_(std::move(window)),
      edit_(edit),
      result_(PlainLabel("Result")),
      remarks_(PlainLabel("Remarks")) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  if (offersItems) {
    items_ = new QComboBox;
    items_->setObjectName("PreviewItem");
    for (const std::string_view name : kPreviewItemNames) items_->addItem(T(name));
    if (!HasStation()) items_->removeItem(0);
    auto* caption = new QLabel(T("&Result with"));
    caption->setBuddy(items_);
    items_->setAccessibleName(T("Result with"));
    auto* row = new QHBoxLayout;
    row->addWidget(caption);
    row->addWidget(items_);
    row->addStretch();
    layout->addLayout(row);
    connect(items_, &QComboBox::currentIndexChanged, this, [this] {
      ShowResult();
      if (onItems) onItems();
    });
  }
  layout->addWidget(result_);
  layout->addWidget(remarks_);
  if (HasStation()) watch_ = desk_.environment.loop.Every(kWatchInterval, [this] { Watch(); });
  Edited();
}

bool TemplateResult::HasStation() const {
  return window_ && window_->IsOpen();
}

PreviewItem TemplateResult::Chosen() const {
  if (items_ == nullptr) return PreviewItem::kPresent;
  const int withoutPresent = static_cast<int>(kPreviewItemNames.size()) - items_->count();
  return static_cast<PreviewItem>(items_->currentIndex() + withoutPresent);
}

SnapshotPtr TemplateResult::Snapshot() const {
  if (Chosen() == PreviewItem::kPresent && HasStation()) return window_->service().TakeSnapshot();
  return SampleSnapshot(Chosen(), desk_.environment.loop.Now());
}

void TemplateResult::Edited() {
  ShowRemarks();
  delay_ = desk_.environment.loop.After(kDelay, [this] { ShowResult(); });
}

void TemplateResult::Watch() {
  if (!isVisible() || Chosen() != PreviewItem::kPresent || !HasStation()) return;
  if (itemsSeen_ == window_->ItemListVersion()) return;
  ShowResult();
  if (onItems) onItems();
}

void TemplateResult::ShowResult() {
  if (HasStation()) itemsSeen_ = window_->ItemListVersion();
  const std::optional<TemplateResultText> result = PreviewTemplate(edit_.Text(), *Snapshot());
  if (!result) return result_->setText(T("Too long for a result while it is edited"));
  const bool whole = result->characters <= kMostResultCharacters;
  result_->setText("→ \"" + QString::fromStdString(result->text) + (whole ? "\"" : "...\"") + "   " +
                   T("%1 characters").arg(result->characters));
}

void TemplateResult::ShowRemarks() {
  QStringList lines;
  if (edit_.Marks().tooLong) lines.append(T("Too long for its tags to be marked"));
  for (const TemplateRemark& remark : edit_.Marks().remarks) lines.append(RemarkText(remark));
  remarks_->setText(lines.join('\n'));
  remarks_->setVisible(!lines.isEmpty());
}

}  // namespace zeb
