#include "app/desktop/dialogs/PropertyDialog.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

namespace {

constexpr int kFieldWidth = 44;  // characters that a line shows at least
constexpr double kMostOfScreen = 0.9;

}  // namespace

QString WithMnemonic(const QString& text, QString& taken) {
  const qsizetype given = text.indexOf('&');
  if (given >= 0 && given + 1 < text.size()) {
    taken += text[given + 1].toLower();
    return text;
  }
  for (qsizetype i = 0; i < text.size(); ++i)
    if (text[i].isLetterOrNumber() && !taken.contains(text[i].toLower())) {
      taken += text[i].toLower();
      return QString(text).insert(i, '&');
    }
  return text;
}

PropertyDialog::PropertyDialog(Desk& desk, ServicePtr window, PropertySheet sheet, PairsField pairs)
    : QDialog(desk.frame),
      desk_(desk),
      window_(std::move(window)),
      sheet_(std::move(sheet)),
      pairs_(std::move(pairs)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle(T(sheet_.caption));
  auto* whole = new QVBoxLayout(this);
  auto* scroll = new QScrollArea;
  scroll->setObjectName("Fields");
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setFocusPolicy(Qt::NoFocus);
  content_ = new QWidget;
  body_ = new QVBoxLayout(content_);
  // Letters that a caption asks for, or the grid of pairs has, are nobody else's.
  for (const PropertyField& field : sheet_.fields)
    if (const QString caption = T(field.caption); caption.contains('&')) WithMnemonic(caption, letters_);
  if (pairs_.widget != nullptr)
    for (const auto* button : pairs_.widget->findChildren<QAbstractButton*>())
      if (button->text().contains('&')) WithMnemonic(button->text(), letters_);
  for (const PropertyField& field : sheet_.fields) AddRow(field);
  body_->addStretch();
  scroll->setWidget(content_);
  whole->addWidget(scroll);

  buttons_ = new QHBoxLayout;
  buttons_->addStretch();
  auto* ok = new QPushButton(T("OK"));
  ok->setDefault(true);
  auto* cancel = new QPushButton(T("Cancel"));
  cancel->setAutoDefault(false);
  buttons_->addWidget(ok);
  buttons_->addWidget(cancel);
  whole->addLayout(buttons_);
  connect(ok, &QPushButton::clicked, this, [this] { Press(); });
  connect(cancel, &QPushButton::clicked, this, [this] { reject(); });

  int widest = 0;
  for (QLabel* label : labels_) widest = std::max(widest, label->sizeHint().width());
  for (QLabel* label : labels_)
    label->setMinimumWidth(std::min(widest, fontMetrics().averageCharWidth() * 34));
  for (auto& [name, row] : rows_)
    row.field->onChanged = [this] {
      Enable();
      if (onChanged) onChanged(Entered());
    };
  Enable();
}

PropertyDialog::~PropertyDialog() {
  for (auto& [name, row] : rows_) row.field->onChanged = nullptr;
}

QString PropertyDialog::Caption(const std::string& english) {
  const QString text = T(english);
  return text.contains('&') ? text : WithMnemonic(text, letters_);
}

void PropertyDialog::AddRow(const PropertyField& field) {
  if (!field.group.empty() || form_ == nullptr) {
    auto* group = new QGroupBox(field.group.empty() || field.group == "-" ? QString() : T(field.group));
    form_ = new QFormLayout(group);
    form_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form_->setRowWrapPolicy(QFormLayout::WrapLongRows);
    body_->addWidget(group);
  }
  if (field.kind == FieldKind::kNote) {
    auto* note = new QLabel(T(field.caption));
    note->setWordWrap(true);
    note->setTextFormat(Qt::PlainText);
    note->setObjectName(QString::fromStdString(field.name));
    return form_->addRow(note);
  }
  if (field.kind == FieldKind::kPairs) {
    pairs_.widget->setObjectName(QString::fromStdString(field.name));
    return form_->addRow(pairs_.widget);
  }
  Row& row = rows_[field.name];
  row.field = MakeFieldWidget(desk_, window_, field);
  row.whole = row.field->Whole();
  QWidget* input = row.field->Input();
  input->setObjectName(QString::fromStdString(field.name));
  input->setAccessibleName(T(PlainCaption(field.caption)));
  if (!field.help.empty()) {
    input->setToolTip(T(field.help));
    input->setAccessibleDescription(T(field.help));
  }
  if (field.kind == FieldKind::kText || field.kind == FieldKind::kTemplate)
    row.whole->setMinimumWidth(fontMetrics().averageCharWidth() * kFieldWidth);
  if (auto* box = dynamic_cast<QAbstractButton*>(input)) {
    box->setText(Caption(field.caption));
    form_->addRow(row.whole);
  } else {
    row.label = new QLabel(Caption(field.caption));
    row.label->setTextFormat(Qt::PlainText);
    row.label->setBuddy(input);
    labels_.push_back(row.label);
    form_->addRow(row.label, row.whole);
  }
  row.field->Begin(field.stored);
}

QPushButton* PropertyDialog::AddButton(const std::string& caption, std::function<void()> pressed) {
  auto* button = new QPushButton(Caption(caption));
  button->setAutoDefault(false);
  buttons_->insertWidget(0, button);
  connect(button, &QPushButton::clicked, this, [pressed = std::move(pressed)] { pressed(); });
  return button;
}

Entries PropertyDialog::Entered() const {
  Entries entries;
  for (const auto& [name, row] : rows_) entries[name] = row.field->Text();
  if (pairs_.count)
    for (const PropertyField& field : sheet_.fields)
      if (field.kind == FieldKind::kPairs) entries[field.name] = std::to_string(pairs_.count());
  return entries;
}

FieldWidget* PropertyDialog::Field(const std::string& name) const {
  const auto found = rows_.find(name);
  return found == rows_.end() ? nullptr : found->second.field.get();
}

void PropertyDialog::SetNote(const std::string& name, const QString& text) {
  if (auto* note = content_->findChild<QLabel*>(QString::fromStdString(name))) note->setText(text);
}

void PropertyDialog::Enable() {
  const Entries entries = Entered();
  for (const PropertyField& field : sheet_.fields) {
    const auto found = rows_.find(field.name);
    if (found == rows_.end() || field.enabledBy.empty()) continue;
    const bool enabled = IsEnabled(field, entries);
    found->second.whole->setEnabled(enabled);
    if (found->second.label != nullptr) found->second.label->setEnabled(enabled);
  }
}

void PropertyDialog::Show(const SheetProblem& problem) {
  const auto found = rows_.find(problem.field);
  QPointer<QWidget> input = found == rows_.end() ? nullptr : found->second.field->Input();
  if (!input && pairs_.widget != nullptr) input = pairs_.widget;
  const auto focus = [input, scroll = QPointer<QScrollArea>(findChild<QScrollArea*>("Fields"))] {
    if (!input || !scroll) return;
    input->setFocus();
    scroll->ensureWidgetVisible(input);
  };
  focus();
  desk_.boxes.Show(this, problem.icon, problem.text, focus);
}

bool PropertyDialog::TakeOver() {
  const std::optional<SheetProblem> problem = Enter(sheet_, Entered());
  if (problem) Show(*problem);
  return !problem;
}

void PropertyDialog::Press() {
  if (!TakeOver()) return;
  if (store)
    if (const Outcome stored = store(); !stored)
      return desk_.boxes.Show(this, MessageIcon::kExclamation, stored.Reason());
  accept();
}

void PropertyDialog::OpenToFit() {
  const QSize wanted =
      content_->sizeHint() + QSize(style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 40, 80);
  const QSize most = screen()->availableGeometry().size() * kMostOfScreen;
  resize(wanted.boundedTo(most));
  open();
}

}  // namespace zeb
