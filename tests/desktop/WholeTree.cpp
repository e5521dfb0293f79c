#include "tests/desktop/WholeTree.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <map>

#include "app/desktop/service/ElidedLabel.h"

namespace zeb {
namespace {

constexpr double kLeastContrast = 4.5;
constexpr int kScreenWidth = 720;  // that a window may take at 100 %

class Check {
 public:
  explicit Check(const QWidget& window) : window_(window) {}

  std::vector<std::string> Problems() {
    for (const QWidget* widget : window_.findChildren<QWidget*>()) {
      if (!widget->isVisible() || widget->window() != &window_) continue;
      CheckSize(*widget);
      CheckLetter(*widget);
      CheckName(*widget);
      CheckContrast(*widget);
    }
    for (const QLabel* label : withoutLetter_) CheckWithoutLetter(*label);
    CheckTabOrder();
    return std::move(problems_);
  }

 private:
  static std::string Called(const QWidget& widget) {
    std::string name = widget.metaObject()->className();
    if (const auto* label = dynamic_cast<const QLabel*>(&widget))
      name += " '" + label->text().toStdString() + "'";
    if (const auto* button = dynamic_cast<const QAbstractButton*>(&widget))
      name += " '" + button->text().toStdString() + "'";
    return name + " (" + widget.objectName().toStdString() + ")";
  }
  void Add(const QWidget& widget, const std::string& what) {
    problems_.push_back(Called(widget) + " " + what);
  }

  static bool IsInput(const QWidget& widget) {
    if (widget.inherits("QComboBoxPrivateContainer")) return false;
    const QWidget* parent = widget.parentWidget();
    if (dynamic_cast<const QComboBox*>(parent) != nullptr) return false;     // its own line
    if (dynamic_cast<const QHeaderView*>(&widget) != nullptr) return false;  // of a table
    if (dynamic_cast<const QAbstractSpinBox*>(&widget) != nullptr) return true;
    if (dynamic_cast<const QAbstractSpinBox*>(widget.parent()) != nullptr) return false;  // it speaks for it
    return dynamic_cast<const QLineEdit*>(&widget) || dynamic_cast<const QPlainTextEdit*>(&widget) ||
           dynamic_cast<const QComboBox*>(&widget) || dynamic_cast<const QAbstractItemView*>(&widget);
  }

  void CheckSize(const QWidget& widget) {
    const auto* label = dynamic_cast<const QLabel*>(&widget);
    if (dynamic_cast<const ElidedLabel*>(&widget) != nullptr) return;  // what is cut is in its tool tip
    if (label != nullptr && label->wordWrap()) {
      if (label->heightForWidth(label->width()) > label->height()) Add(widget, "is cut off");
    } else if (label != nullptr || dynamic_cast<const QAbstractButton*>(&widget) != nullptr ||
               dynamic_cast<const QComboBox*>(&widget) != nullptr) {
      const QSize wanted = label != nullptr || dynamic_cast<const QAbstractButton*>(&widget) != nullptr
                               ? widget.sizeHint()
                               : widget.minimumSizeHint();
      if (wanted.width() > widget.width() || wanted.height() > widget.height())
        Add(widget, "is cut off: " + std::to_string(widget.width()) + "x" + std::to_string(widget.height()) +
                        " of " + std::to_string(wanted.width()) + "x" + std::to_string(wanted.height()));
    }
    if (const auto* area = dynamic_cast<const QScrollArea*>(&widget))
      if (area->horizontalScrollBar()->maximum() > 0)
        Add(widget, "scrolls sideways by " + std::to_string(area->horizontalScrollBar()->maximum()));
  }

  void CheckLetter(const QWidget& widget) {
    QString text;
    if (const auto* button = dynamic_cast<const QAbstractButton*>(&widget)) text = button->text();
    const auto* label = dynamic_cast<const QLabel*>(&widget);
    if (label != nullptr && label->buddy() != nullptr) text = label->text();
    const qsizetype at = text.replace("&&", "").indexOf('&');
    if (at < 0 || at + 1 >= text.size()) {
      if (label != nullptr && label->buddy() != nullptr) withoutLetter_.push_back(label);
      return;
    }
    const QChar letter = text[at + 1].toLower();
    if (const auto [other, isNew] = letters_.emplace(letter, Called(widget)); !isNew)
      Add(widget, "has the letter of " + other->second);
  }

  // In a window of many fields letters run out; not before.
  void CheckWithoutLetter(const QLabel& label) {
    for (const QChar letter : label.text().toLower())
      if (letter.isLetterOrNumber() && !letters_.contains(letter)) return Add(label, "has no letter");
  }

  void CheckName(const QWidget& widget) {
    const auto* button = dynamic_cast<const QAbstractButton*>(&widget);
    if (button != nullptr && button->text().isEmpty() && button->accessibleName().isEmpty() &&
        button->focusPolicy() != Qt::NoFocus)
      Add(widget, "has no name for those who cannot see it");
    if (IsInput(widget) && widget.accessibleName().isEmpty())
      Add(widget, "has no name for those who cannot see it");
  }

  static double Luminance(const QColor& colour) {
    const auto linear = [](double part) {
      return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
  }
  void CheckContrast(const QWidget& widget) {
    if (!widget.isEnabled()) return;
    const bool isInput = IsInput(widget);
    if (!isInput && dynamic_cast<const QLabel*>(&widget) == nullptr) return;
    const QPalette& palette = widget.palette();
    const double a = Luminance(palette.color(isInput ? QPalette::Text : QPalette::WindowText));
    const double b = Luminance(palette.color(isInput ? QPalette::Base : QPalette::Window));
    if ((std::max(a, b) + 0.05) / (std::min(a, b) + 0.05) < kLeastContrast) Add(widget, "is hard to read");
  }

  // In the window; what has to be scrolled to counts as at the edge that it is behind.
  QRect Place(const QWidget& widget) const {
    QRect place(widget.mapTo(&window_, QPoint(0, 0)), widget.size());
    for (const QWidget* parent = widget.parentWidget(); parent != nullptr; parent = parent->parentWidget())
      if (const auto* area = dynamic_cast<const QScrollArea*>(parent)) {
        const int bottom = area->mapTo(&window_, QPoint(0, area->height())).y();
        place.moveTop(std::min(place.top(), bottom));
        place.setBottom(std::min(place.bottom(), bottom));
      }
    return place;
  }

  // Nothing follows that lies above what came before, unless it is further right.
  void CheckTabOrder() {
    const QWidget* before = nullptr;
    const QWidget* first = window_.nextInFocusChain();
    for (const QWidget* widget = first; widget != nullptr;) {
      if (widget->window() == &window_ && widget->isVisible() && widget->isEnabled() && widget != &window_ &&
          (widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && widget->focusProxy() == nullptr) {
        if (before != nullptr) {
          const QRect was = Place(*before), is = Place(*widget);
          if (is.bottom() < was.top() && is.left() < was.right())
            Add(*widget, "follows " + Called(*before) + ", which is below it");
        }
        before = widget;
      }
      widget = widget->nextInFocusChain();
      if (widget == first) break;
    }
  }

  const QWidget& window_;
  std::map<QChar, std::string> letters_;
  std::vector<const QLabel*> withoutLetter_;
  std::vector<std::string> problems_;
};

}  // namespace

std::vector<std::string> WholeTreeProblems(const QWidget& window) {
  return Check(window).Problems();
}

void ExpectWholeTree(const std::function<QWidget*()>& open) {
  const QFont usual = QApplication::font();
  for (const double scale : {1.0, 1.5, 2.0}) {
    QFont font = usual;
    font.setPointSizeF(usual.pointSizeF() * scale);
    QApplication::setFont(font);
    const QPointer<QWidget> window = open();
    if (!window) {
      ADD_FAILURE() << "no window at " << scale * 100 << " %";
      break;
    }
    // A screen of that scale has as much more room.
    window->resize(std::max(window->width(), static_cast<int>(kScreenWidth * scale)), window->height());
    QApplication::processEvents();
    for (const std::string& problem : WholeTreeProblems(*window))
      ADD_FAILURE() << "at " << scale * 100 << " %: " << problem;
    window->close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  QApplication::setFont(usual);
}

}  // namespace zeb
