#include "app/desktop/dialogs/ImportDialog.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/text/ChooseLanguage.h"
#include "app/desktop/text/Translate.h"
#include "app/frmMain.h"
#include "dialogs/SecretSettings.h"
#include "platform/Operator.h"
#include "text/Composed.h"
#include "text/LetterCase.h"

namespace zeb {
namespace {

enum Column { kSetting, kChange, kNow, kAfterwards, kColumns };

std::string_view WordOf(RegDifference::Kind kind) {
  switch (kind) {
    case RegDifference::Kind::kAdded:
      return Translatable("Added");
    case RegDifference::Kind::kChanged:
      return Translatable("Changed");
    case RegDifference::Kind::kRemoved:
      break;
  }
  return Translatable("Removed");
}

QString TextOf(const RegDifference& difference, const std::optional<SettingsData>& data) {
  if (!data) return {};
  const SettingsData shown = Masked({difference.name.value_or(""), *data});
  if (const auto* text = std::get_if<std::string>(&shown)) return QString::fromStdString(*text);
  return QString::number(static_cast<std::int32_t>(std::get<std::uint32_t>(shown)));
}

// Below the settings root the root itself says nothing.
std::string ShortKey(const std::string& key, const std::string& root) {
  if (!StartsWithIgnoringCase(key, root)) return key;
  return key.size() > root.size() + 1 && key[root.size()] == '\\' ? key.substr(root.size() + 1) : key;
}

}  // namespace

ImportDialog::ImportDialog(Desk& desk, std::string path, std::shared_ptr<const RegChanges> changes,
                           std::vector<RegDifference> differences)
    : DialogFrame(desk.frame, "ImportSettings", "Import Settings"),
      desk_(desk),
      path_(std::move(path)),
      changes_(std::move(changes)),
      differences_(std::move(differences)),
      summary_(new QLabel(this)),
      list_(new QTreeWidget(this)) {
  summary_->setTextFormat(Qt::PlainText);
  summary_->setWordWrap(true);
  Contents()->addWidget(summary_);
  Contents()->addWidget(Caption(list_, "Changes", "&What will change:"));
  list_->setHeaderLabels({T("Setting"), T("Change"), T("Now"), T("Afterwards")});
  list_->setUniformRowHeights(true);
  Contents()->addWidget(list_, 1);
  AddButton("Import", "&Import", [this] { Import(); });
  AddCancel()->setDefault(true);
  const QFontMetrics metrics(font());
  resize(metrics.averageCharWidth() * 110, metrics.height() * 30);
  Show();
  list_->setFocus();
}

void ImportDialog::Show() {
  const auto count = [this](RegDifference::Kind kind) {
    return static_cast<qlonglong>(
        std::count_if(differences_.begin(), differences_.end(),
                      [kind](const RegDifference& one) { return one.What() == kind; }));
  };
  using Kind = RegDifference::Kind;
  QString text = QString::fromStdString(path_) + "\n" +
                 T("%1 added, %2 changed, %3 removed")
                     .arg(count(Kind::kAdded))
                     .arg(count(Kind::kChanged))
                     .arg(count(Kind::kRemoved));
  if (const std::size_t skipped = changes_->skippedKeys + changes_->skippedValues; skipped > 0)
    text += "\n" + T("%1 entries of other programs are left out").arg(skipped);
  summary_->setText(text);

  list_->clear();
  QTreeWidgetItem* key = nullptr;
  const std::string* path = nullptr;
  for (std::size_t i = 0; i < differences_.size() && i < kMostShown; ++i) {
    const RegDifference& one = differences_[i];
    if (key == nullptr || *path != one.key) {
      key = new QTreeWidgetItem(list_,
                                {QString::fromStdString(ShortKey(one.key, desk_.environment.settingsRoot))});
      key->setFirstColumnSpanned(true);
      path = &one.key;
    }
    const QString name = !one.name           ? T("(the key itself)")
                         : one.name->empty() ? "@"
                                             : QString::fromStdString(*one.name);
    auto row = std::make_unique<QTreeWidgetItem>(
        QStringList{name, T(WordOf(one.What())), TextOf(one, one.before), TextOf(one, one.after)});
    for (const Column column : {kNow, kAfterwards})
      row->setToolTip(column, row->text(column).left(1000).toHtmlEscaped());
    key->addChild(row.release());
  }
  if (differences_.size() > kMostShown)
    new QTreeWidgetItem(list_, {T("… and %1 more").arg(differences_.size() - kMostShown)});
  list_->expandAll();
  for (int column = 0; column < kColumns; ++column) {
    list_->resizeColumnToContents(column);
    list_->setColumnWidth(column, std::min(list_->columnWidth(column), 210));
  }
}

// What is taken over is what was looked through, or nothing.
void ImportDialog::Import() {
  SettingsHive& hive = desk_.environment.hive;
  try {
    std::optional<RegSummary> imported;
    hive.Transaction([&] {
      std::vector<RegDifference> now = CompareRegChanges(hive, *changes_);
      if (now != differences_) {
        differences_ = std::move(now);
        return;
      }
      Result<RegSummary> applied = ApplyRegChanges(hive, *changes_);
      if (!applied) throw SettingsError(applied.Reason());  // so that nothing of it stays
      imported = applied.Value();
    });
    if (!imported) {
      Show();
      return desk_.boxes.Show(
          this, MessageIcon::kExclamation,
          std::string(Translatable("The settings have been changed by somebody else meanwhile. "
                                   "Look through the list again.")));
    }
    desk_.environment.person.Note("Imported '" + path_ + "': " + imported->Text());
  } catch (const std::exception& error) {
    return desk_.boxes.Show(
        this, MessageIcon::kExclamation,
        Composed("The settings could not be imported; everything is as it was.\n%1", {error.what()}));
  }
  Desk& desk = desk_;
  accept();
  desk.main.Reload();
  UseStoredLanguage(desk);
}

}  // namespace zeb
