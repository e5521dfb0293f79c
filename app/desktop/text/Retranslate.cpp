#include "app/desktop/text/Retranslate.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QTabBar>
#include <QTreeWidget>
#include <string>
#include <unordered_map>

#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

class Retranslation {
 public:
  explicit Retranslation(const Language* before) {
    if (before == nullptr) return;
    before->ForEach([this](const std::string& english, const std::string& translated) {
      const auto [place, added] = english_.emplace(translated, english);
      // Of two that read alike the shorter one is the word, the other one a sentence that fits here only.
      if (!added && english.size() < place->second.size()) place->second = english;
    });
  }

  void Take(QWidget& widget) const {
    Change(widget, "windowTitle", widget.windowTitle(),
           [&](const QString& text) { widget.setWindowTitle(text); });
    Change(widget, "toolTip", widget.toolTip(), [&](const QString& text) { widget.setToolTip(text); });
    Change(widget, "accessibleName", widget.accessibleName(),
           [&](const QString& text) { widget.setAccessibleName(text); });
    if (auto* label = dynamic_cast<QLabel*>(&widget))
      Change(*label, "text", label->text(), [&](const QString& text) { label->setText(text); });
    if (auto* button = dynamic_cast<QAbstractButton*>(&widget))
      Change(*button, "text", button->text(), [&](const QString& text) { button->setText(text); });
    if (auto* group = dynamic_cast<QGroupBox*>(&widget))
      Change(*group, "title", group->title(), [&](const QString& text) { group->setTitle(text); });
    if (auto* line = dynamic_cast<QLineEdit*>(&widget))
      Change(*line, "placeholder", line->placeholderText(),
             [&](const QString& text) { line->setPlaceholderText(text); });
    if (auto* tabs = dynamic_cast<QTabBar*>(&widget))
      for (int i = 0; i < tabs->count(); ++i)
        Change(*tabs, "tab" + QByteArray::number(i), tabs->tabText(i),
               [&](const QString& text) { tabs->setTabText(i, text); });
    if (auto* tree = dynamic_cast<QTreeWidget*>(&widget))
      for (int i = 0; i < tree->columnCount(); ++i)
        Change(*tree, "heading" + QByteArray::number(i), tree->headerItem()->text(i),
               [&](const QString& text) { tree->headerItem()->setText(i, text); });
    widget.update();  // headings that models give are asked for anew
  }

  void Take(QAction& action) const {
    const QString toolTip = action.toolTip();
    Change(action, "text", action.text(), [&](const QString& text) { action.setText(text); });
    Change(action, "toolTip", toolTip, [&](const QString& text) { action.setToolTip(text); });
  }

 private:
  // What a text was before its first translation is kept beside it: of two that read alike in one language
  // nobody could tell which it was. Given up once somebody else has set another text.
  template <class Set>
  void Change(QObject& of, const QByteArray& slot, const QString& shown, const Set& set) const {
    if (shown.isEmpty()) return;
    const QByteArray property = "english-" + slot;
    const QStringList kept = of.property(property).toStringList();
    const std::string english =
        kept.size() == 2 && kept[1] == shown ? kept[0].toStdString() : EnglishOf(shown.toStdString());
    const QString now = T(english);
    if (now == shown) return;
    set(now);
    of.setProperty(property, QStringList{QString::fromStdString(english), now});
  }

  std::string EnglishOf(const std::string& text) const {
    const auto known = english_.find(text);
    return known == english_.end() ? text : known->second;
  }

  std::unordered_map<std::string, std::string> english_;
};

}  // namespace

void RetranslateWindows(const Language* before) {
  if (qApp == nullptr) return;
  const Retranslation retranslation(before);
  for (QWidget* widget : QApplication::allWidgets()) {
    retranslation.Take(*widget);
    for (QAction* action : widget->findChildren<QAction*>(QString(), Qt::FindDirectChildrenOnly))
      retranslation.Take(*action);
  }
}

}  // namespace zeb
