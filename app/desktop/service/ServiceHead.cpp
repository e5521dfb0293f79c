#include "app/desktop/service/ServiceHead.h"

#include <QGridLayout>
#include <QLabel>

#include "app/desktop/service/ElidedLabel.h"
#include "app/desktop/service/ShownText.h"
#include "app/desktop/text/Translate.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {

QString Details(const clsZEBItemInfo& item) {
  QStringList parts;
  if (const std::string_view type = ItemTypeText(item->ItemType); !type.empty()) parts << T(type);
  if (const QString length = ItemLengthText(item); !length.isEmpty()) parts << length;
  if (item->ItemStartDate > 0 || item->ItemStartTime > 0)
    parts << T("since %1").arg(QString::fromStdString(TimeText(item->ItemStartTime)));
  return parts.join(QStringLiteral(" · "));
}

QString Named(const QString& caption, const QString& text) {
  return text.isEmpty() ? QString() : caption.arg(text);
}

QString PresenterAndShow(const StationState& state) {
  QStringList parts;
  const std::string& who = state.presenterName.empty() ? state.presenterReference : state.presenterName;
  const std::string& show = state.showTitle.empty() ? state.showReference : state.showTitle;
  if (!who.empty()) parts << T("Presenter %1").arg(CellText(who));
  if (!show.empty()) parts << T("Show %1").arg(CellText(show));
  return parts.join(QStringLiteral(" · "));
}

}  // namespace

ServiceHead::ServiceHead(QWidget* parent)
    : QWidget(parent),
      onAir_(new ElidedLabel("onAir", this)),
      details_(new ElidedLabel("onAirDetails", this)),
      next_(new ElidedLabel("nextItem", this)),
      coming_(new ElidedLabel("comingSoon", this)),
      presenter_(new ElidedLabel("presenter", this)),
      travel_(new QLabel(this)) {
  QFont big = onAir_->font();
  big.setPointSizeF(big.pointSizeF() * 1.5);
  big.setBold(true);
  onAir_->setFont(big);
  travel_->setObjectName(QStringLiteral("travel"));
  travel_->setTextFormat(Qt::PlainText);
  travel_->setAccessibleDescription(T("Travel announcement"));
  QFont bold = travel_->font();
  bold.setBold(true);
  travel_->setFont(bold);
  details_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  coming_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setVerticalSpacing(2);
  grid->addWidget(onAir_, 0, 0);
  grid->addWidget(details_, 0, 1, 1, 2);
  grid->addWidget(next_, 1, 0);
  grid->addWidget(coming_, 1, 1, 1, 2);
  grid->addWidget(presenter_, 2, 0, 1, 2);
  grid->addWidget(travel_, 2, 2);
  grid->setColumnStretch(0, 3);
  grid->setColumnStretch(1, 2);
}

void ServiceHead::Take(const StationState& state) {
  const QString title = TitleAndArtists(state.current);
  onAir_->Take(state.elsewhere   ? T("Only settings: another program publishes")
               : title.isEmpty() ? T("Nothing on air yet")
                                 : T("On air: %1").arg(title));
  details_->Take(Details(state.current));
  next_->Take(state.next.empty() ? QString() : Named(T("Next: %1"), TitleAndArtists(state.next.front())));
  coming_->Take(Named(T("Coming soon: %1"), TitleAndArtists(state.comingSoon)));
  presenter_->Take(PresenterAndShow(state));
  if (const QString travel = T(state.travel); travel_->text() != travel) travel_->setText(travel);
}

}  // namespace zeb
