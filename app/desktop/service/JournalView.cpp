#include "app/desktop/service/JournalView.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "app/desktop/service/GridView.h"
#include "app/desktop/service/ShownText.h"
#include "app/desktop/text/Translate.h"
#include "text/OneLine.h"

namespace zeb {

JournalView::JournalView(const JournalTail& journal, QWidget* parent)
    : QWidget(parent),
      journal_(journal),
      model_({T("Time"), T("Journal")}),
      grid_(new GridView(model_, QStringLiteral("journal"), T("Journal"))),
      all_(new QCheckBox(T("Lines of all s&ervices"))),
      follow_(new QCheckBox(T("Follow what is &new"))) {
  grid_->SetWidths({10});
  all_->setObjectName(QStringLiteral("journalOfAll"));
  follow_->setObjectName(QStringLiteral("journalFollows"));
  follow_->setChecked(true);
  connect(all_, &QCheckBox::toggled, [this] {
    BeginAnew();
    Draw(name_);
  });
  connect(follow_, &QCheckBox::toggled, [this](bool on) {
    if (on) grid_->scrollToBottom();
  });
  // Who scrolls back reads; who is at the end follows.
  connect(grid_->verticalScrollBar(), &QScrollBar::sliderReleased, [this] {
    const QScrollBar* bar = grid_->verticalScrollBar();
    follow_->setChecked(bar->value() == bar->maximum());
  });
  auto* boxes = new QHBoxLayout;
  boxes->addWidget(all_);
  boxes->addWidget(follow_);
  boxes->addStretch();
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addLayout(boxes);
  column->addWidget(grid_);
}

void JournalView::BeginAnew() {
  drawn_ = 0;
  model_.Take({});
}

// Its lines begin with its name.
bool JournalView::IsWanted(const std::string& line) const {
  if (all_->isChecked()) return true;
  return line.starts_with(name_) && (line.size() == name_.size() || line[name_.size()] == ':');
}

void JournalView::Draw(const std::string& serviceName) {
  if (const std::string name = OneLine(serviceName); name != name_) {
    name_ = name;
    BeginAnew();
  }
  if (drawn_ == journal_.Told()) return;
  const auto& lines = journal_.Lines();
  const std::uint64_t first = journal_.Told() - lines.size();
  std::vector<GridRow> rows;
  for (std::uint64_t number = std::max(drawn_, first); number < journal_.Told(); ++number) {
    const JournalTail::Line& line = lines[static_cast<std::size_t>(number - first)];
    if (!IsWanted(line.text)) continue;
    rows.push_back({number, {{ClockText(line.moment)}, {CellText(line.text, 1000)}}});
  }
  drawn_ = journal_.Told();
  if (rows.empty()) return;
  model_.Append(std::move(rows), JournalTail::kMostForReading);
  if (follow_->isChecked()) grid_->scrollToBottom();
}

}  // namespace zeb
