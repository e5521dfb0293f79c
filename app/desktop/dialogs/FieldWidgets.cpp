#include "app/desktop/dialogs/FieldWidgets.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QWheelEvent>
#include <algorithm>
#include <utility>

#include "app/desktop/dialogs/BrowseFilters.h"
#include "app/desktop/dialogs/TemplateEdit.h"
#include "app/desktop/text/Translate.h"
#include "text/Paths.h"

namespace zeb {

std::string FieldWidget::Text() const {
  std::string text = Entered();
  return text == shown_ ? stored_ : text;
}

void FieldWidget::Begin(const std::string& stored) {
  SetText(stored);
  stored_ = stored;
  shown_ = Entered();
}

void FieldWidget::Changed() const {
  if (onChanged) onChanged();
}

namespace {

constexpr int kNumberWidth = 8;  // characters

QHBoxLayout* RowIn(QWidget* whole) {
  auto* row = new QHBoxLayout(whole);
  row->setContentsMargins(0, 0, 0, 0);
  return row;
}

class LineWidget : public FieldWidget {
 public:
  explicit LineWidget(FieldKind kind) : whole_(new QWidget), line_(new QLineEdit(whole_)) {
    auto* row = RowIn(whole_);
    row->addWidget(line_);
    whole_->setFocusProxy(line_);
    if (kind == FieldKind::kNumber) {
      line_->setInputMethodHints(Qt::ImhPreferNumbers);
      line_->setMaximumWidth(line_->fontMetrics().averageCharWidth() * (kNumberWidth + 3));
      row->addStretch();
    }
    QObject::connect(line_, &QLineEdit::textChanged, whole_, [this] { Changed(); });
  }

  QWidget* Whole() override { return whole_; }
  QWidget* Input() override { return line_; }
  void SetText(const std::string& text) override { line_->setText(QString::fromStdString(text)); }

 protected:
  std::string Entered() const override { return line_->text().toStdString(); }
  QLineEdit* Line() const { return line_; }
  QWidget* const whole_;

 private:
  QLineEdit* const line_;
};

class PasswordWidget : public LineWidget {
 public:
  PasswordWidget() : LineWidget(FieldKind::kPassword) {
    Line()->setEchoMode(QLineEdit::Password);
    auto* show = new QToolButton(whole_);
    show->setText(T("Show"));
    show->setAccessibleName(T("Show the password"));
    show->setCheckable(true);
    whole_->layout()->addWidget(show);
    QObject::connect(show, &QToolButton::toggled, whole_, [line = Line()](bool shown) {
      line->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
    });
  }
};

class FileWidget : public LineWidget {
 public:
  FileWidget(const PropertyField& field, std::string folder)
      : LineWidget(field.kind),
        folder_(std::move(folder)),
        isFolder_(field.kind == FieldKind::kFolder),
        title_(field.chooserTitle),
        filters_(field.filters) {
    if (title_.empty()) title_ = isFolder_ ? "Choose a folder" : "Choose a file";
    auto* browse = new QPushButton(T("Browse..."), whole_);
    browse->setAutoDefault(false);
    browse->setAccessibleName(T("Browse...") + " " + T(PlainCaption(field.caption)));
    browse->setObjectName(QString::fromStdString(field.name) + "Browse");
    whole_->layout()->addWidget(browse);
    QObject::connect(browse, &QPushButton::clicked, whole_, [this] { Choose(); });
  }
  void SetChooser(const std::string& title, const std::string& filters) override {
    title_ = title;
    filters_ = filters;
  }

 private:
  void Choose() {
    auto* dialog = new QFileDialog(whole_, T(title_));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(isFolder_ ? QFileDialog::Directory : QFileDialog::ExistingFile);
    if (!filters_.empty()) ChooseFilters(*dialog, filters_, "");
    const std::string now = Entered();
    dialog->setDirectory(
        QString::fromStdString(now.empty() ? folder_ : std::string(FolderPart(JoinPath(folder_, now)))));
    QObject::connect(dialog, &QFileDialog::fileSelected, whole_,
                     [this](const QString& path) { SetText(path.toStdString()); });
    dialog->open();
  }

  const std::string folder_;
  const bool isFolder_;
  std::string title_, filters_;
};

class SwitchWidget : public FieldWidget {
 public:
  SwitchWidget() : box_(new QCheckBox) {
    QObject::connect(box_, &QCheckBox::toggled, box_, [this] { Changed(); });
  }
  QWidget* Whole() override { return box_; }
  void SetText(const std::string& text) override { box_->setChecked(text == "1"); }

 protected:
  std::string Entered() const override { return box_->isChecked() ? "1" : "0"; }

 private:
  QCheckBox* const box_;
};

// A list that the wheel does not change by accident while somebody scrolls past.
class QuietCombo : public QComboBox {
 protected:
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

class ListWidget : public FieldWidget {
 public:
  explicit ListWidget(const PropertyField& field) : box_(new QuietCombo), setting_(field.setting) {
    box_->setEditable(field.kind == FieldKind::kSuggested);
    box_->setSizeAdjustPolicy(box_->isEditable() ? QComboBox::AdjustToMinimumContentsLengthWithIcon
                                                 : QComboBox::AdjustToContents);
    if (box_->isEditable()) box_->setMinimumContentsLength(24);
    Fill(field.choices);
    QObject::connect(box_, &QComboBox::currentTextChanged, box_, [this] { Changed(); });
  }

  QWidget* Whole() override { return box_; }
  void SetText(const std::string& text) override {
    if (box_->isEditable()) return box_->setEditText(QString::fromStdString(text));
    int index = box_->findData(QString::fromStdString(text));
    if (index < 0 && MayBe(text)) {
      index = box_->count();
      box_->addItem(QString::fromStdString(text), QString::fromStdString(text));
    }
    box_->setCurrentIndex(index);
  }
  void Offer(const std::vector<PropertyChoice>& choices) override {
    const std::string now = Entered();
    const QSignalBlocker quiet(box_);
    box_->clear();
    Fill(choices);
    SetText(now);
  }

 protected:
  std::string Entered() const override {
    return (box_->isEditable() ? box_->currentText() : box_->currentData().toString()).toStdString();
  }

 private:
  void Fill(const std::vector<PropertyChoice>& choices) {
    for (const PropertyChoice& choice : choices) {
      box_->addItem(box_->isEditable() ? QString::fromStdString(choice.value) : T(choice.text),
                    QString::fromStdString(choice.value));
      box_->setItemData(box_->count() - 1, T(choice.text), Qt::ToolTipRole);
    }
  }
  // What is stored by other hands and is none of the choices is shown as it is; a number that has no meaning
  // is shown as nothing chosen.
  bool MayBe(const std::string& text) const {
    if (setting_.kind != SettingInfo::Kind::kNumber) return !text.empty();
    if (!setting_.entry.words.empty()) return false;
    const int number = QString::fromStdString(text).toInt();
    return number >= setting_.entry.least && number <= setting_.entry.most;
  }

  QComboBox* const box_;
  const SettingInfo setting_;
};

class TemplateWidget : public FieldWidget {
 public:
  TemplateWidget(Desk& desk, const ServicePtr& window) : edit_(new TemplateEdit(desk, window, true)) {
    edit_->onChanged = [this] { Changed(); };
  }
  QWidget* Whole() override { return edit_; }
  QWidget* Input() override { return edit_->Input(); }
  void SetText(const std::string& text) override { edit_->SetText(text); }

 protected:
  std::string Entered() const override { return edit_->Text(); }

 private:
  TemplateEdit* const edit_;
};

// Templates with "|" between them, a line each.
class TemplateListWidget : public FieldWidget {
 public:
  TemplateListWidget() : edit_(new QPlainTextEdit) {
    edit_->setTabChangesFocus(true);
    edit_->setLineWrapMode(QPlainTextEdit::NoWrap);
    edit_->setFixedHeight(edit_->fontMetrics().lineSpacing() * 4);
    QObject::connect(edit_, &QPlainTextEdit::textChanged, edit_, [this] { Changed(); });
  }
  QWidget* Whole() override { return edit_; }
  void SetText(const std::string& text) override {
    edit_->setPlainText(QString::fromStdString(text).replace('|', '\n'));
  }

 protected:
  std::string Entered() const override {
    QStringList lines = edit_->toPlainText().split('\n');
    while (!lines.empty() && lines.back().isEmpty()) lines.pop_back();
    return lines.join('|').toStdString();
  }

 private:
  QPlainTextEdit* const edit_;
};

}  // namespace

std::unique_ptr<FieldWidget> MakeFieldWidget(Desk& desk, const ServicePtr& window,
                                             const PropertyField& field) {
  switch (field.kind) {
    case FieldKind::kPassword:
      return std::make_unique<PasswordWidget>();
    case FieldKind::kSwitch:
      return std::make_unique<SwitchWidget>();
    case FieldKind::kChoice:
    case FieldKind::kSuggested:
      return std::make_unique<ListWidget>(field);
    case FieldKind::kTemplate:
      return std::make_unique<TemplateWidget>(desk, window);
    case FieldKind::kTemplateList:
      return std::make_unique<TemplateListWidget>();
    case FieldKind::kFile:
    case FieldKind::kFolder:
      return std::make_unique<FileWidget>(field, desk.environment.dataFolder);
    case FieldKind::kText:
    case FieldKind::kNumber:
    case FieldKind::kPairs:
    case FieldKind::kNote:
      break;
  }
  return std::make_unique<LineWidget>(field.kind);
}

}  // namespace zeb
