#include "app/desktop/dialogs/PairDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/BrowseFilters.h"
#include "app/desktop/dialogs/TemplateEdit.h"
#include "app/desktop/text/Translate.h"
#include "dialogs/EscapeValuesField.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

template <class W>
W* Named(W* widget, const char* name, std::string_view caption) {
  widget->setObjectName(name);
  widget->setAccessibleName(T(caption).remove('&'));
  return widget;
}

QLabel* Caption(std::string_view text, QWidget* buddy) {
  auto* label = new QLabel(T(text));
  label->setBuddy(buddy);
  return label;
}

// frmGetFileParameters.
class PairDialog : public QDialog {
 public:
  PairDialog(Desk& desk, QWidget* parent, const ServicePtr& window, FileParametersMode mode,
             clsFileParameters pair, std::function<void(const clsFileParameters&)> taken)
      : QDialog(parent),
        desk_(desk),
        mode_(mode),
        pair_(std::move(pair)),
        taken_(std::move(taken)),
        texts_(TextsFor(mode)),
        simpleText_(new TemplateEdit(desk, window, true)) {
    setObjectName("FileParameters");
    setWindowTitle(T(kFileParametersCaption));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(Names());
    layout->addWidget(Rules());
    layout->addWidget(PageOptions());
    layout->addLayout(Text());
    layout->addStretch();
    layout->addWidget(Buttons());
    Fill();
    connect(useRules_, &QCheckBox::toggled, rules_, &QWidget::setEnabled);
    rules_->setEnabled(useRules_->isChecked());
    connect(refresh_, &QCheckBox::toggled, seconds_, &QWidget::setEnabled);
    seconds_->setEnabled(refresh_->isChecked());
    source_->setFocus();
  }

 private:
  QGridLayout* Names() {
    auto* grid = new QGridLayout;
    source_ = Named(new QLineEdit, "SourceFileName", texts_.source);
    destination_ = Named(new QLineEdit, "DestinationFileName", texts_.destination);
    verify_ = Named(new QLineEdit, "VerifyURL", "Public address");
    verify_->setToolTip(T("Where listeners find it; looked at after each update. May stay empty."));
    grid->addWidget(Caption(texts_.source, source_), 0, 0);
    grid->addWidget(source_, 0, 1);
    grid->addWidget(BrowseButton("BrowseSource", source_, texts_.browseSourceTitle, true), 0, 2);
    grid->addWidget(Caption(texts_.destination, destination_), 1, 0);
    grid->addWidget(destination_, 1, 1);
    // A place on a server is not to be found among this computer's files.
    if (mode_ == FileParametersMode::kFile)
      grid->addWidget(BrowseButton("BrowseDestination", destination_, texts_.browseDestinationTitle, false),
                      1, 2);
    grid->addWidget(Caption("&Public address:", verify_), 2, 0);
    grid->addWidget(verify_, 2, 1);
    return grid;
  }

  QWidget* Rules() {
    auto* whole = new QWidget;
    useRules_ = Named(new QCheckBox(T(texts_.onlyByRules)), "UseUpdateRules", texts_.onlyByRules);
    rules_ = new QGroupBox;
    rules_->setAccessibleName(T(texts_.onlyByRules));
    auto* grid = new QGridLayout(rules_);
    item_ = Named(new QComboBox, "UpdateRulesUsingItem", "Item that the rules look at");
    for (const std::string_view name : kRuleItems) item_->addItem(T(name));
    auto* noItem = Named(new QCheckBox(T(texts_.whenNoItem)), "WhenNoItem", texts_.whenNoItem);
    noItem->setChecked(true);
    noItem->setEnabled(false);
    noItem->setToolTip(T("Always: without an item the rules have nothing to look at."));
    grid->addWidget(Caption("&Item that the rules look at:", item_), 0, 0);
    grid->addWidget(item_, 0, 1);
    grid->addWidget(noItem, 1, 0, 1, 2);
    grid->addWidget(new QLabel(T(texts_.whenAnyTrue)), 2, 0, 1, 2);
    static constexpr const char* kNames[] = {"UpdateIfAdvert", "UpdateIfCart",        "UpdateIfJingle",
                                             "UpdateIfSong",   "UpdateIfVoiceCustom", "UpdateIfUnknown"};
    for (std::size_t i = 0; i < kUpdateRules.size(); ++i) {
      const std::string_view text = kUpdateRules[i].text;
      flags_[i] = Named(new QCheckBox(T(text)), kNames[i], text);
      grid->addWidget(flags_[i], 3 + static_cast<int>(i / 2), static_cast<int>(i % 2));
    }
    auto* layout = new QVBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(useRules_);
    layout->addWidget(rules_);
    return whole;
  }

  QWidget* PageOptions() {
    auto* group = new QGroupBox;
    group->setAccessibleName(T(kPageOptionsNote));
    auto* note = new QLabel(T(kPageOptionsNote));
    note->setWordWrap(true);
    noCache_ = Named(new QCheckBox(T(kNoCacheCaption)), "AddNoCache", kNoCacheCaption);
    refresh_ = Named(new QCheckBox(T(kRefreshCaption)), "RefreshTag", kRefreshCaption);
    seconds_ = Named(new QLineEdit, "RefreshTagSeconds", kRefreshCaption);
    seconds_->setMaximumWidth(10 * fontMetrics().averageCharWidth());
    versions_ = Named(new QCheckBox(T(kVersionsCaption)), "UseMultipleVersions", kVersionsCaption);
    auto* refresh = new QHBoxLayout;
    refresh->addWidget(refresh_);
    refresh->addWidget(seconds_);
    refresh->addWidget(new QLabel(T(kRefreshUnit)));
    refresh->addStretch();
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(note);
    layout->addWidget(noCache_);
    layout->addLayout(refresh);
    layout->addWidget(versions_);
    return group;
  }

  QGridLayout* Text() {
    auto* grid = new QGridLayout;
    Named(simpleText_->Input(), "SimpleTextFormat", "Simple text");
    escape_ = Named(new QComboBox, "EscapeValues", kEscapeCaption);
    escape_->setEditable(true);
    escape_->setInsertPolicy(QComboBox::NoInsert);
    escape_->setCompleter(nullptr);
    for (const EscapeText& choice : kEscapeTexts) escape_->addItem(T(choice.text));
    grid->addWidget(Caption("Simple &text:", simpleText_), 0, 0, Qt::AlignTop);
    grid->addWidget(simpleText_, 0, 1);
    grid->addWidget(Caption(kEscapeCaption, escape_), 1, 0);
    grid->addWidget(escape_, 1, 1);
    return grid;
  }

  QWidget* Buttons() {
    auto* ok = new QPushButton(T("OK"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(T("Cancel"));
    cancel->setAutoDefault(false);
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(ok, QDialogButtonBox::AcceptRole);
    buttons->addButton(cancel, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { Finish(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    return buttons;
  }

  QPushButton* BrowseButton(const char* name, QLineEdit* field, const std::string& title, bool existing) {
    auto* button = new QPushButton(T("Browse..."));
    button->setObjectName(name);
    button->setAccessibleName(T(title));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [=, this] { Browse(field, title, existing); });
    return button;
  }

  void Browse(QLineEdit* field, const std::string& title, bool existing) {
    auto* chooser = new QFileDialog(this, T(title));
    chooser->setObjectName("Browse" + field->objectName());
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    // What is chosen as destination is meant to be replaced, at each update.
    chooser->setOption(QFileDialog::DontConfirmOverwrite);
    chooser->setAcceptMode(existing ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    chooser->setFileMode(existing ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    chooser->setDefaultSuffix(kBrowseExtension.data());
    ChooseFilters(*chooser, kBrowseFilters, kBrowsePattern);
    if (!field->text().isEmpty()) chooser->selectFile(field->text());
    connect(chooser, &QFileDialog::fileSelected, this, [field](const QString& file) {
      field->setText(QDir::toNativeSeparators(file));
      field->setFocus();
    });
    chooser->open();
  }

  void Fill() {
    source_->setText(QString::fromStdString(pair_.SourceFileName()));
    destination_->setText(QString::fromStdString(pair_.DestinationFileName()));
    verify_->setText(QString::fromStdString(pair_.VerifyURL));
    useRules_->setChecked(pair_.UseUpdateRules);
    item_->setCurrentIndex(pair_.UpdateRulesUsingItem);  // none chosen for a number that there is not
    for (std::size_t i = 0; i < flags_.size(); ++i)
      flags_[i]->setChecked((pair_.UpdateRulesFlags & kUpdateRules[i].flag) != 0);
    noCache_->setChecked(pair_.AddNoCache);
    refresh_->setChecked(pair_.RefreshTagSeconds > 0);
    if (pair_.RefreshTagSeconds > 0) seconds_->setText(QString::number(pair_.RefreshTagSeconds));
    versions_->setChecked(pair_.UseMultipleVersions);
    simpleText_->SetText(pair_.SimpleTextFormat);
    const auto* const known =
        std::find_if(kEscapeTexts.begin(), kEscapeTexts.end(),
                     [this](const EscapeText& text) { return text.word == pair_.EscapeValues; });
    if (known != kEscapeTexts.end())
      escape_->setCurrentIndex(static_cast<int>(known - kEscapeTexts.begin()));
    else
      escape_->setEditText(QString::fromStdString(pair_.EscapeValues));
  }

  // The word behind the line of the list, or what was typed.
  std::string EscapeWord() const {
    const QString text = escape_->currentText();
    for (const EscapeText& choice : kEscapeTexts)
      if (text == T(choice.text)) return std::string(choice.word);
    return text.toStdString();
  }

  clsFileParameters Entered() const {
    clsFileParameters pair = pair_;
    pair.SetSourceFileName(source_->text().toStdString());
    pair.SetDestinationFileName(destination_->text().toStdString());
    if (verify_->isModified()) pair.VerifyURL = verify_->text().trimmed().toStdString();
    pair.UseUpdateRules = useRules_->isChecked();
    if (item_->currentIndex() >= 0) pair.UpdateRulesUsingItem = item_->currentIndex();
    for (std::size_t i = 0; i < flags_.size(); ++i) {
      const std::int32_t flag = kUpdateRules[i].flag;
      pair.UpdateRulesFlags = (pair.UpdateRulesFlags & ~flag) | (flags_[i]->isChecked() ? flag : 0);
    }
    pair.AddNoCache = noCache_->isChecked();
    if (refresh_->isChecked())
      pair.RefreshTagSeconds = LeadingInteger(seconds_->text().toStdString());
    else if (pair.RefreshTagSeconds > 0)
      pair.RefreshTagSeconds = 0;
    pair.UseMultipleVersions = versions_->isChecked();
    pair.SimpleTextFormat = simpleText_->Text();
    pair.EscapeValues = EscapeWord();
    return pair;
  }

  void Finish() {
    const FileParametersEntries entries{source_->text().toStdString(), destination_->text().toStdString(),
                                        refresh_->isChecked(), seconds_->text().toStdString()};
    const FileParametersProblem problem = CheckFileParameters(mode_, entries);
    if (!problem.message.empty()) return Refuse(problem.message, FieldOf(problem.field));
    if (const std::string wrong = CheckEscapeValues(EscapeWord()); !wrong.empty())
      return Refuse(wrong, escape_);
    const clsFileParameters pair = Entered();
    accept();
    if (taken_) taken_(pair);
  }

  QWidget* FieldOf(FileParametersField field) const {
    switch (field) {
      case FileParametersField::kRefreshSeconds:
        return seconds_;
      case FileParametersField::kSource:
        return source_;
      case FileParametersField::kDestination:
        break;
    }
    return destination_;
  }

  void Refuse(const std::string& message, QWidget* field) {
    field->setFocus();
    if (auto* line = dynamic_cast<QLineEdit*>(field)) line->selectAll();
    desk_.boxes.Show(this, MessageIcon::kInformation, message);
  }

  Desk& desk_;
  const FileParametersMode mode_;
  const clsFileParameters pair_;
  const std::function<void(const clsFileParameters&)> taken_;
  const FileParametersTexts texts_;
  QLineEdit *source_ = nullptr, *destination_ = nullptr, *verify_ = nullptr, *seconds_ = nullptr;
  QCheckBox *useRules_ = nullptr, *noCache_ = nullptr, *refresh_ = nullptr, *versions_ = nullptr;
  QGroupBox* rules_ = nullptr;
  QComboBox *item_ = nullptr, *escape_ = nullptr;
  std::array<QCheckBox*, kUpdateRules.size()> flags_{};
  TemplateEdit* simpleText_;
};

}  // namespace

void OpenPairDialog(Desk& desk, QWidget* parent, const ServicePtr& window, FileParametersMode mode,
                    const clsFileParameters& pair,
                    std::function<void(const clsFileParameters& pair)> accepted) {
  (new PairDialog(desk, parent, window, mode, pair, std::move(accepted)))->open();
}

}  // namespace zeb
