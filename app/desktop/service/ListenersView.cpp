#include "app/desktop/service/ListenersView.h"

#include <QLabel>
#include <QSplitter>
#include <QTextCursor>
#include <QTextEdit>
#include <QVBoxLayout>

#include "app/desktop/service/GridView.h"
#include "app/desktop/service/ShownText.h"
#include "app/desktop/service/StationRows.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

namespace {

QString SetName(const OutputRoom& room) {
  if (!room.set) return T("of the template");
  const std::string_view name = CharacterSetName(*room.set);
  return QLatin1String(name.data(), static_cast<qsizetype>(name.size()));
}

// Name, size and beginning of each page.
QString PagesText(const Shown& shown) {
  QStringList pages;
  for (const Shown::Page& page : shown.pages)
    pages << T("%1 (%2 bytes)").arg(CellText(page.name), QString::number(page.bytes)) + "\n" +
                 LinesText(FirstLines(page.beginning));
  return pages.join("\n\n");
}

GridRow RowOf(std::uint64_t key, const QString& title, const Shown& shown, const ListenersText& text,
              const OutputRoom& room) {
  GridRow row;
  row.key = key;
  const bool isText = !shown.text.empty();
  QStringList lost;
  if (!text.replaced.empty()) lost << T("▲ %1 replaced").arg(text.replaced.size());
  if (!text.cut.isEmpty()) lost << T("▲ %1 cut").arg(text.cut.size());
  row.cells = {{title},
               {isText ? CellText(text.text.toStdString()) : ShownLine(shown)},
               {isText ? text.Counter(room) : QString()},
               {SetName(room)},
               {lost.join(' '), text.Lost()}};
  return row;
}

}  // namespace

ListenersView::ListenersView(QWidget* parent)
    : QWidget(parent),
      model_({T("Output"), T("Listeners see"), T("Characters"), T("Character set"), T("Cannot be sent")}),
      grid_(new GridView(model_, QStringLiteral("listeners"), T("What listeners see of each output"))),
      caption_(new QLabel),
      text_(new QTextEdit) {
  grid_->SetWidths({11, 60, 12, 16, 12});
  grid_->onChosen = [this] { ShowChosen(); };
  caption_->setObjectName(QStringLiteral("listenersCaption"));
  caption_->setTextFormat(Qt::PlainText);
  caption_->setWordWrap(true);
  text_->setObjectName(QStringLiteral("listenersText"));
  text_->setAccessibleName(T("What listeners see of the chosen output"));
  text_->setReadOnly(true);
  text_->setTabChangesFocus(true);
  text_->setUndoRedoEnabled(false);
  auto* below = new QWidget;
  auto* column = new QVBoxLayout(below);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(caption_);
  column->addWidget(text_);
  auto* splitter = new QSplitter(Qt::Vertical);
  splitter->setChildrenCollapsible(false);
  splitter->addWidget(grid_);
  splitter->addWidget(below);
  auto* all = new QVBoxLayout(this);
  all->setContentsMargins(0, 0, 0, 0);
  all->addWidget(splitter);
}

void ListenersView::Take(const StationState& state, const clsZEBService& service) {
  std::vector<GridRow> rows;
  details_.clear();
  for (const OutputState& one : state.outputs) {
    const OutputPtr output = service.Output(one.type, one.number);
    if (!output) continue;
    const OutputRoom room = RoomOf(*output);
    const ListenersText text =
        SeenByListeners(one.shown.text, WantedText(one.shown, service.LastSnapshot()), room);
    const QString title = OutputTitle(*output, one.number);
    rows.push_back(RowOf(KeyOf(output), title, one.shown, text, room));
    QStringList caption{title};
    if (one.shown.text.empty() && one.shown.pages.empty()) caption << T("nothing was published yet");
    if (!one.shown.text.empty()) caption << T("%1 characters in %2").arg(text.Counter(room), SetName(room));
    if (const QString lost = text.Lost(); !lost.isEmpty()) caption << lost;
    details_.emplace_back(KeyOf(output), Detail{caption.join(" · "), PagesText(one.shown), text});
  }
  model_.Take(std::move(rows));
  ShowChosen();
}

void ListenersView::Choose(std::uint64_t key) {
  grid_->Choose(key);
}

void ListenersView::ShowChosen() {
  const auto chosen = grid_->Chosen();
  for (const auto& [key, detail] : details_)
    if (key == chosen) return Draw(detail);
  Draw({T("Choose an output to see its whole text."), {}, {}});
}

// Marked by underline and bold, which need no colour.
void ListenersView::Draw(const Detail& detail) {
  if (drawn_ == detail) return;
  drawn_ = detail;
  caption_->setText(detail.caption);
  text_->setPlainText(detail.text.text + (detail.text.text.isEmpty() ? QString() : "\n") + detail.pages);
  QTextCharFormat mark;
  mark.setFontWeight(QFont::Bold);
  mark.setUnderlineStyle(QTextCharFormat::WaveUnderline);
  for (const ListenersText::Replaced& one : detail.text.replaced) {
    QTextCursor cursor(text_->document());
    cursor.setPosition(static_cast<int>(one.at));
    cursor.setPosition(static_cast<int>(one.at + one.length), QTextCursor::KeepAnchor);
    cursor.setCharFormat(mark);
  }
}

}  // namespace zeb
