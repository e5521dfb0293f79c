#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/FieldChooser.h"
#include "app/desktop/dialogs/TemplateResult.h"
#include "app/desktop/dialogs/TemplateTextEdit.h"
#include "app/desktop/text/Translate.h"
#include "dialogs/TemplateBuilder.h"

namespace zeb {
namespace {

// frmFormatCreator.
class FormatCreator : public QDialog {
 public:
  FormatCreator(Desk& desk, QWidget* parent, const ServicePtr& window, const std::string& text,
                std::function<void(const std::string&)> taken)
      : QDialog(parent),
        desk_(desk),
        taken_(std::move(taken)),
        edit_(new TemplateTextEdit(true)),
        result_(new TemplateResult(desk, window, *edit_, true)),
        chooser_(new FieldChooser) {
    setObjectName("FormatCreator");
    setWindowTitle(T("Format Creator"));
    setAttribute(Qt::WA_DeleteOnClose);
    setSizeGripEnabled(true);
    edit_->setObjectName("FormatString");
    edit_->setAccessibleName(T("Format string"));
    LayOut();
    Connect();
    edit_->SetText(text);
    edit_->moveCursor(QTextCursor::End);
    chooser_->SetItems(result_->Snapshot());
    edit_->setFocus();
  }

 private:
  void LayOut() {
    auto* caption = new QLabel(T("Format &string"));
    caption->setBuddy(edit_);
    auto* help = new QLabel(T(kBuilderHelp));
    help->setObjectName("HelpText");
    help->setTextFormat(Qt::PlainText);
    help->setWordWrap(true);
    auto* showHelp = new QPushButton(T("&Help"));
    showHelp->setObjectName("Help");
    showHelp->setCheckable(true);
    showHelp->setChecked(true);
    showHelp->setAutoDefault(false);
    connect(showHelp, &QPushButton::toggled, help, &QWidget::setVisible);
    ok_ = new QPushButton(T("OK"));
    ok_->setDefault(true);
    auto* cancel = new QPushButton(T("Cancel"));
    cancel->setAutoDefault(false);
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(showHelp, QDialogButtonBox::HelpRole);
    buttons->addButton(ok_, QDialogButtonBox::AcceptRole);
    buttons->addButton(cancel, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { Finish(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QGridLayout(this);
    layout->addWidget(chooser_, 0, 0, 4, 1);
    layout->addWidget(caption, 0, 1);
    layout->addWidget(edit_, 1, 1);
    layout->addWidget(result_, 2, 1);
    layout->addWidget(help, 3, 1);
    layout->addWidget(buttons, 4, 0, 1, 2);
    layout->setColumnStretch(0, 2);
    layout->setColumnStretch(1, 3);
    layout->setRowStretch(1, 1);
    edit_->setMinimumHeight(6 * edit_->fontMetrics().lineSpacing());
    const int width = fontMetrics().averageCharWidth();
    resize(150 * width, sizeHint().height());
  }

  void Connect() {
    edit_->onChanged = [this] { result_->Edited(); };
    result_->onItems = [this] { chooser_->SetItems(result_->Snapshot()); };
    chooser_->onAdd = [this](const std::string& insertion) { edit_->Insert(insertion); };
  }

  void Finish() {
    const std::string text = edit_->Text();
    if (const std::string_view problem = SectionProblem(text); !problem.empty()) {
      edit_->ShowFault();
      edit_->setFocus();
      return desk_.boxes.Show(this, MessageIcon::kExclamation, std::string(problem));
    }
    accept();
    if (taken_) taken_(text);
  }

  Desk& desk_;
  const std::function<void(const std::string&)> taken_;
  TemplateTextEdit* edit_;
  TemplateResult* result_;
  FieldChooser* chooser_;
  QPushButton* ok_ = nullptr;
};

}  // namespace

void OpenFormatCreator(Desk& desk, QWidget* parent, const ServicePtr& window, const std::string& text,
                       std::function<void(const std::string& text)> accepted) {
  (new FormatCreator(desk, parent, window, text, std::move(accepted)))->open();
}

}  // namespace zeb
