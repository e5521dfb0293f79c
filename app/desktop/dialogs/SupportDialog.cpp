#include "app/desktop/dialogs/SupportDialog.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <exception>
#include <map>
#include <optional>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/Files.h"
#include "app/desktop/text/Translate.h"
#include "app/frmMain.h"
#include "platform/EventLoop.h"
#include "platform/Operator.h"
#include "text/Composed.h"
#include "text/Lines.h"

namespace zeb {
namespace {

constexpr Duration kCollectLimit = std::chrono::seconds(60);
constexpr std::size_t kMostReason = 10000;

QString SizeText(std::size_t bytes) {
  return bytes < 10240 ? T("%1 bytes").arg(bytes) : T("%1 KB").arg(bytes / 1024);
}

}  // namespace

SupportDialog::SupportDialog(Desk& desk)
    : DialogFrame(desk.frame, "SupportFile", Translatable("Support File")),
      desk_(desk),
      steps_(new QStackedWidget(this)) {
  steps_->addWidget(MakeQuestions());
  steps_->addWidget(MakeLookThrough());
  Contents()->addWidget(steps_, 1);
  back_ = AddButton("Back", Translatable("&Back"), [this] { Back(); });
  next_ = AddButton("Next", Translatable("&Look through it"), [this] { Collect(); });
  save_ = AddButton("Save", Translatable("&Save…"), [this] { AskWhere(); });
  AddCancel();
  Back();
  const QFontMetrics metrics(font());
  resize(metrics.averageCharWidth() * 110, metrics.height() * 30);
}

QWidget* SupportDialog::MakeQuestions() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* what = new QLabel(
      T("A support file holds what somebody needs to see who helps you: the settings without their "
        "passwords, the state of all services, journal and debug logs. You see everything before "
        "it is written, and nothing is sent."),
      page);
  what->setWordWrap(true);
  layout->addWidget(what);
  reference_ = new QLineEdit(page);
  reference_->setMaxLength(100);
  layout->addWidget(
      Caption(reference_, "Reference", Translatable("Support &reference, when you were given one:")));
  layout->addWidget(reference_);
  reason_ = new QPlainTextEdit(page);
  reason_->setTabChangesFocus(true);
  layout->addWidget(Caption(reason_, "Reason", Translatable("&What is it that you need help with?")));
  layout->addWidget(reason_, 1);
  templates_ = new QCheckBox(T("Include the &template files"), page);
  templates_->setObjectName("Templates");
  layout->addWidget(templates_);
  return page;
}

QWidget* SupportDialog::MakeLookThrough() {
  auto* splitter = new QSplitter(this);
  tree_ = new QTreeWidget(splitter);
  tree_->setHeaderLabels({T("File"), T("Size")});
  tree_->setObjectName("Files");
  tree_->setAccessibleName(T("Files in the support file; those without a tick are left out"));
  text_ = new QPlainTextEdit(splitter);
  text_->setObjectName("Text");
  text_->setAccessibleName(T("Text of the chosen file"));
  text_->setReadOnly(true);
  text_->setTabChangesFocus(true);
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({240, 660});
  QObject::connect(tree_, &QTreeWidget::currentItemChanged, this, [this] { ShowText(); });
  return splitter;
}

void SupportDialog::Back() {
  steps_->setCurrentIndex(0);
  Working(false);
  reference_->setFocus();
}

// Which buttons are of use now.
void SupportDialog::Working(bool working) {
  const bool asks = steps_->currentIndex() == 0;
  back_->setVisible(!asks);
  save_->setVisible(!asks);
  next_->setVisible(asks);
  for (QPushButton* button : {back_, save_, next_}) button->setEnabled(!working);
  (asks ? next_ : save_)->setDefault(true);
}

void SupportDialog::Tell(const std::string& text) {
  desk_.boxes.Show(this, MessageIcon::kExclamation, text);
}

void SupportDialog::Collect() {
  if (reason_->toPlainText().trimmed().isEmpty()) {
    Tell(std::string(Translatable("You must say what you need help with")));
    return reason_->setFocus();
  }
  SupportInput input;
  input.reason = reason_->toPlainText().left(kMostReason).toStdString();
  input.reference = reference_->text().trimmed().toStdString();
  input.withTemplates = templates_->isChecked();
  std::vector<StationState> states;
  for (int number = 1; number <= desk_.main.NumberServices(); ++number)
    states.push_back(desk_.main.Window(number)->Board().State());
  AddStatus(input, desk_.environment.loop, states);
  AddJournal(input, desk_.journal);
  Working(true);
  EventLoop& loop = desk_.environment.loop;
  loop.Start("support file", [this, &loop, mark = epoch_.Now(), plan = PlanSupport(desk_.environment, input),
                              &files = desk_.environment.files] {
    auto entries = loop.RunBlocking([&files, plan] { return CollectSupport(files, plan); }, kCollectLimit);
    loop.Post([this, mark, entries = std::move(entries)] {
      if (!mark.Holds()) return;
      if (entries) return ShowEntries(*entries);
      Working(false);
      Tell(std::string(Translatable("The files for the support file could not be read in time")));
    });
  });
}

void SupportDialog::ShowEntries(std::vector<ZipEntry> entries) {
  entries_ = std::move(entries);
  tree_->clear();
  std::map<std::string, QTreeWidgetItem*> folders;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const ZipEntry& entry = entries_[i];
    const std::size_t slash = entry.name.find('/');
    QTreeWidgetItem* parent = tree_->invisibleRootItem();
    if (slash != std::string::npos) {
      QTreeWidgetItem*& folder = folders[entry.name.substr(0, slash)];
      if (folder == nullptr) {
        folder = new QTreeWidgetItem(tree_, {QString::fromStdString(entry.name.substr(0, slash))});
        folder->setFlags(folder->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate);
      }
      parent = folder;
    }
    const std::string name = slash == std::string::npos ? entry.name : entry.name.substr(slash + 1);
    auto* item = new QTreeWidgetItem(parent, {QString::fromStdString(name), SizeText(entry.bytes.size())});
    item->setData(0, Qt::UserRole, static_cast<qulonglong>(i + 1));
    item->setCheckState(0, Qt::Checked);
    // Without it nobody knows what the rest is for.
    if (i == 0) item->setFlags(item->flags() & ~Qt::ItemIsUserCheckable);
  }
  tree_->expandAll();
  tree_->resizeColumnToContents(0);
  tree_->setCurrentItem(tree_->topLevelItem(0));
  steps_->setCurrentIndex(1);
  Working(false);
  tree_->setFocus();
}

void SupportDialog::ShowText() {
  const QTreeWidgetItem* item = tree_->currentItem();
  const std::size_t number = item != nullptr ? item->data(0, Qt::UserRole).toULongLong() : 0;
  if (number == 0) return text_->clear();
  const std::string& bytes = entries_[number - 1].bytes;
  QString shown;
  std::size_t from = 0;
  if (bytes.size() > kMostShown) {
    from = bytes.size() - kMostShown;
    while (from < bytes.size() && (static_cast<unsigned char>(bytes[from]) & 0xC0) == 0x80) ++from;
    shown = T("(the file is longer; this is its end)") + "\n";
  }
  shown += QString::fromUtf8(bytes.data() + from, static_cast<qsizetype>(bytes.size() - from));
  text_->setPlainText(shown);
}

std::vector<ZipEntry> SupportDialog::Ticked() const {
  std::vector<ZipEntry> ticked;
  for (QTreeWidgetItemIterator item(tree_); *item != nullptr; ++item) {
    const std::size_t number = (*item)->data(0, Qt::UserRole).toULongLong();
    if (number > 0 && (*item)->checkState(0) == Qt::Checked) ticked.push_back(entries_[number - 1]);
  }
  return ticked;
}

void SupportDialog::AskWhere() {
  OpenFileQuestion(
      this,
      {.title = std::string(Translatable("Save the Support File")),
       .filters = {std::string(Translatable("Zip files (*.zip)"))},
       .folder = {},
       .name = SupportFileName(reference_->text().trimmed().toStdString(), desk_.environment.loop.Now()),
       .toWrite = true,
       .suffix = "zip"},
      [this](const std::string& path) { Write(path); });
}

void SupportDialog::Write(const std::string& path) {
  const ZipFiles* zips = desk_.environment.zips;
  if (zips == nullptr) return Tell(std::string(Translatable("This program cannot write zip files")));
  Working(true);
  EventLoop& loop = desk_.environment.loop;
  loop.Start("support file", [this, &loop, path, zips, mark = epoch_.Now(), entries = Ticked(),
                              &files = desk_.environment.files] {
    const std::optional<Outcome> written =
        loop.RunBlocking([&files, zips, path, entries,
                          now = loop.Now()] { return WriteSupport(files, *zips, path, entries, now); },
                         kCollectLimit);
    loop.Post([this, mark, path, written] {
      if (!mark.Holds()) return;
      Working(false);
      if (!written || !*written)
        return Tell(Composed("The support file could not be written.\n%1",
                             {written ? written->Reason() : "'" + path + "' could not be written in time"}));
      desk_.boxes.Show(
          desk_.frame, MessageIcon::kInformation,
          Composed("The support file is now in\n%1\nNothing has been sent: give it to whoever helps you.",
                   {path}));
      accept();
    });
  });
}

void OpenSupportFile(Desk& desk) {
  (new SupportDialog(desk))->open();
}

}  // namespace zeb
