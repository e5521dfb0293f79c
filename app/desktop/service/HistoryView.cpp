#include "app/desktop/service/HistoryView.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QVBoxLayout>
#include <utility>

#include "app/desktop/service/GridView.h"
#include "app/desktop/service/ShownText.h"
#include "app/desktop/text/Translate.h"
#include "history/HistoryForms.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr auto kSpan = 12h;  // what is looked at, at first
constexpr Duration kReadEach = 2s, kReadAfterChange = 6s, kReadLimit = 10s;
constexpr std::size_t kMostWhyCharacters = 20000;

GridRow Cells(std::uint64_t key, const HistoryRow& row) {
  const bool isItem = row.output.empty();
  QString what = isItem ? T("on air") : QString::fromStdString(row.output);
  if (!row.part.empty()) what += " " + CellText(row.part);
  const QString result = isItem ? QString() : row.problem.empty() ? T("published") : T("▲ failed");
  QString latency;
  if (row.latency) latency = TookText(*row.latency);
  const QString text = CellText(row.problem.empty() ? row.text : row.problem);
  return {key,
          {{QString::fromStdString(LocalMomentText(row.moment))}, {what}, {result}, {latency}, {text}},
          {},
          {},
          isItem};
}

}  // namespace

HistoryView::HistoryView(Desk& desk, QWidget* parent)
    : QWidget(parent),
      desk_(desk),
      model_({T("Moment"), T("What"), T("Result"), T("Took"), T("Text")}),
      grid_(new GridView(model_, QStringLiteral("history"), T("History"))),
      output_(new QComboBox),
      note_(new QLabel),
      why_(new QPlainTextEdit) {
  grid_->SetWidths({21, 24, 11, 10});
  grid_->onChosen = [this] { ShowChosen(); };
  auto* caption = new QLabel(T("O&utput"));
  caption->setBuddy(output_);
  output_->setObjectName(QStringLiteral("historyOutput"));
  output_->setAccessibleName(T("Whose history is shown"));
  output_->addItem(T("Everything"), QString());
  connect(output_, &QComboBox::currentIndexChanged, [this] { BeginAnew(); });
  note_->setObjectName(QStringLiteral("historyNote"));
  note_->setTextFormat(Qt::PlainText);
  note_->setWordWrap(true);
  why_->setObjectName(QStringLiteral("historyWhy"));
  why_->setAccessibleName(T("Why it showed that"));
  why_->setReadOnly(true);
  why_->setTabChangesFocus(true);
  why_->setPlaceholderText(T("Choose a publication to see what it was made of."));
  auto* row = new QHBoxLayout;
  row->addWidget(caption);
  row->addWidget(output_);
  row->addWidget(note_, 1);
  auto* splitter = new QSplitter(Qt::Vertical);
  splitter->setChildrenCollapsible(false);
  splitter->addWidget(grid_);
  splitter->addWidget(why_);
  splitter->setStretchFactor(0, 2);
  splitter->setStretchFactor(1, 1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addLayout(row);
  column->addWidget(splitter);
}

void HistoryView::Draw(const StationState& state, std::uint64_t version) {
  if (!desk_.openHistory) return note_->setText(T("No history is kept."));
  if (state.number != service_) {
    service_ = state.number;
    BeginAnew();
  }
  OfferOutputs(state);
  const MonotonicTime now = desk_.environment.loop.Monotonic();
  if (version_ != version) readUntil_ = now + kReadAfterChange;
  version_ = version;
  if (busy_ || now < nextRead_ || nextRead_ > readUntil_) return;
  nextRead_ = now + kReadEach;
  Read();
}

// The choice stays while it is offered.
void HistoryView::OfferOutputs(const StationState& state) {
  QStringList names{QString()};
  for (const OutputState& output : state.outputs) names << QString::fromStdString(output.Name());
  QStringList offered;
  for (int i = 0; i < output_->count(); ++i) offered << output_->itemData(i).toString();
  if (offered == names) return;
  for (int i = output_->count() - 1; i > 0; --i)
    if (!names.contains(output_->itemData(i).toString())) output_->removeItem(i);
  for (int i = 1; i < names.size(); ++i)
    if (output_->itemData(i).toString() != names[i]) output_->insertItem(i, names[i], names[i]);
}

void HistoryView::BeginAnew() {
  question_.Next();
  busy_ = false;
  model_.Take({});
  rows_.clear();
  why_->clear();
  const HistoryMoment now(desk_.environment.loop.Now(), desk_.environment.loop.UtcOffset());
  from_ = now.utc - std::chrono::milliseconds(kSpan).count();
  items_ = publications_ = {from_, 0};
  nextRead_ = {};
  readUntil_ = desk_.environment.loop.Monotonic() + kReadAfterChange;
}

void HistoryView::Read() {
  HistoryQuestion question{desk_.openHistory, {}, items_, publications_};
  question.filter.service = service_;
  question.filter.from = from_;
  question.filter.output = output_->currentData().toString().toStdString();
  busy_ = true;
  EventLoop& loop = desk_.environment.loop;
  loop.Start("history", [this, &loop, question, mark = question_.Now()] {
    auto piece = loop.RunBlocking([question] { return ReadHistoryPiece(question); }, kReadLimit,
                                  [this, mark] {
                                    if (mark.Holds()) busy_ = false;
                                  });
    if (!mark.Holds()) return;
    if (!piece) return note_->setText(T("The history does not answer."));
    busy_ = false;
    Take(std::move(*piece));
  });
}

void HistoryView::Take(HistoryPiece piece) {
  items_ = piece.items;
  publications_ = piece.publications;
  note_->setText(CellText(piece.problem));
  std::vector<GridRow> rows;
  for (HistoryRow& row : piece.rows) {
    rows.push_back(Cells(++lastKey_, row));
    rows_.emplace(lastKey_, std::move(row));
  }
  if (rows.empty()) return;
  const bool follows = !grid_->Chosen();
  model_.Append(std::move(rows), kMostHistoryRows);
  const std::uint64_t first = model_.Rows().front().key;
  std::erase_if(rows_, [first](const auto& entry) { return entry.first < first; });
  if (follows) grid_->scrollToBottom();
}

void HistoryView::ShowChosen() {
  const auto chosen = grid_->Chosen();
  const auto found = chosen ? rows_.find(*chosen) : rows_.end();
  if (found == rows_.end()) return;
  if (!found->second.output.empty()) return Explain(found->second);
  why_->setPlainText(QString::fromStdString(LocalMomentText(found->second.moment)) + "\n" +
                     LinesText(found->second.text));
}

void HistoryView::Explain(const HistoryRow& row) {
  if (std::exchange(explaining_, true)) return;  // the last chosen one comes next
  why_->setPlainText(T("One moment.."));
  EventLoop& loop = desk_.environment.loop;
  loop.Start(
      "history", [this, &loop, row, open = desk_.openHistory, service = service_, mark = epoch_.Now()] {
        const auto text =
            loop.RunBlocking([=] { return WhyText(open, service, row.output, row.moment); }, kReadLimit,
                             [this, mark] {
                               if (mark.Holds()) explaining_ = false;
                             });
        if (!mark.Holds()) return;
        if (!text) return why_->setPlainText(T("The history does not answer."));
        explaining_ = false;
        const auto chosen = grid_->Chosen();
        const auto found = chosen ? rows_.find(*chosen) : rows_.end();
        const bool isStill =
            found != rows_.end() && found->second.id == row.id && found->second.output == row.output;
        if (!isStill) return ShowChosen();
        why_->setPlainText(LinesText(*text, kMostWhyCharacters));
      });
}

}  // namespace zeb
