#include "app/desktop/frame/ServicesOverview.h"

#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include "app/desktop/frame/Theme.h"
#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

constexpr int kGap = 6;

// Two lines: mark, name and the state's word; below them what is on air, or what is wrong.
class ServiceDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
    return {option.fontMetrics.averageCharWidth() * 24, 2 * option.fontMetrics.height() + 2 * kGap};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& given, const QModelIndex& index) const override {
    QStyleOptionViewItem option = given;
    option.state &= ~QStyle::State_HasFocus;
    const QPalette& palette = option.palette;
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    painter->save();
    painter->setClipRect(option.rect);
    painter->fillRect(option.rect, palette.brush(selected ? QPalette::Highlight : QPalette::Base));
    const auto severity = static_cast<Severity>(index.data(ServiceList::kSeverityRole).toInt());
    const QColor text = palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    const QColor mark = selected ? text : ColourOf(severity, palette);
    PaintLines(*painter, option, index, severity, text, mark);
    if ((given.state & QStyle::State_HasFocus) != 0) {
      painter->setPen(QPen(text, 1, Qt::DotLine));
      painter->setBrush(Qt::NoBrush);
      painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
    painter->restore();
  }

 private:
  static void PaintLines(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index,
                         Severity severity, const QColor& text, const QColor& mark) {
    const int line = option.fontMetrics.height();
    QRect first(option.rect.left() + kGap, option.rect.top() + kGap, option.rect.width() - 2 * kGap, line);
    const int side = line - 3;
    PaintMark(painter, QRectF(first.left(), first.top() + (line - side) / 2.0, side, side), severity, mark);
    first.setLeft(first.left() + line + kGap);
    QRect second = first.translated(0, line);
    painter.setPen(mark);
    if (severity != Severity::kOk) {
      const QString word = WordFor(severity);
      painter.drawText(first, Qt::AlignRight | Qt::AlignVCenter, word);
      first.setRight(first.right() - option.fontMetrics.horizontalAdvance(word) - kGap);
    }
    const QString trouble = index.data(ServiceList::kTroubleRole).toString();
    const QString below = trouble.isEmpty() ? index.data(ServiceList::kNowRole).toString() : trouble;
    painter.setPen(trouble.isEmpty() ? text : mark);
    painter.drawText(second, Qt::AlignLeft | Qt::AlignVCenter,
                     option.fontMetrics.elidedText(below, Qt::ElideRight, second.width()));
    QFont bold = option.font;
    bold.setBold(true);
    painter.setFont(bold);
    painter.setPen(text);
    painter.drawText(first, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(bold).elidedText(index.data().toString(), Qt::ElideRight, first.width()));
  }
};

}  // namespace

ServicesOverview::ServicesOverview(const frmMain& main)
    : list_(new ServiceList(main)),
      shown_(new QSortFilterProxyModel(this)),
      caption_(new QLabel(this)),
      find_(new QLineEdit(this)),
      view_(new QListView(this)) {
  setObjectName("Overview");
  list_->setParent(this);
  shown_->setSourceModel(list_);
  shown_->setFilterCaseSensitivity(Qt::CaseInsensitive);
  QFont bold = caption_->font();
  bold.setBold(true);
  caption_->setFont(bold);
  caption_->setBuddy(view_);
  find_->setObjectName("FindService");
  find_->setClearButtonEnabled(true);
  find_->setMaxLength(200);
  view_->setObjectName("Services");
  view_->setModel(shown_);
  view_->setUniformItemSizes(true);
  view_->setItemDelegate(new ServiceDelegate(view_));
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  view_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  ShowTexts();
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(kGap, kGap, kGap, kGap);
  for (QWidget* widget :
       {static_cast<QWidget*>(caption_), static_cast<QWidget*>(find_), static_cast<QWidget*>(view_)})
    column->addWidget(widget);
  QObject::connect(find_, &QLineEdit::textChanged, this,
                   [this](const QString& text) { shown_->setFilterFixedString(text); });
  QObject::connect(find_, &QLineEdit::returnPressed, this, [this] { Open(shown_->index(0, 0)); });
  QObject::connect(view_, &QListView::activated, this, [this](const QModelIndex& index) { Open(index); });
}

void ServicesOverview::ShowTexts() {
  caption_->setText(T("&Services"));
  find_->setPlaceholderText(T("Find a service"));
  find_->setAccessibleName(T("Find a service"));
  view_->setAccessibleName(T("Services"));
}

void ServicesOverview::Open(const QModelIndex& index) {
  if (const auto service = list_->At(shown_->mapToSource(index).row()); service && onOpen) onOpen(service);
}

std::shared_ptr<frmService> ServicesOverview::Selected() const {
  return list_->At(shown_->mapToSource(view_->currentIndex()).row());
}

void ServicesOverview::Select(const std::shared_ptr<frmService>& service) {
  const QModelIndex index = shown_->mapFromSource(list_->index(list_->RowOf(service)));
  if (index.isValid() && index != view_->currentIndex()) view_->setCurrentIndex(index);
}

void ServicesOverview::FocusFind() {
  find_->setFocus(Qt::ShortcutFocusReason);
  find_->selectAll();
}

}  // namespace zeb
