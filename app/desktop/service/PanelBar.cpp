#include "app/desktop/service/PanelBar.h"

#include <QHBoxLayout>

#include "app/desktop/service/ElidedLabel.h"
#include "app/desktop/service/ShownText.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

namespace {

ElidedLabel* MakePanel(const char* name, const QString& meaning, QWidget* parent) {
  auto* panel = new ElidedLabel(name, parent);
  panel->setFrameStyle(QFrame::Panel | QFrame::Sunken);
  panel->setMargin(2);
  panel->setAccessibleDescription(meaning);
  return panel;
}

// What is wrong has the sign of what fails before it.
QString SourceText(const SourceState& source) {
  const QString text = CellText(source.text);
  if (source.kind == SourceState::Kind::kNone) return text.isEmpty() ? T("No information source") : text;
  return source.healthy ? text : QStringLiteral("▲ ") + text;
}

}  // namespace

PanelBar::PanelBar(QWidget* parent)
    : QWidget(parent),
      source_(MakePanel("source", T("Information source"), this)),
      netControl_(MakePanel("netcontrol", T("Who has control"), this)),
      bounce_(MakePanel("bouncecontrol", T("Relay to another ZEB"), this)),
      information_(MakePanel("information", T("What is being done"), this)) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(source_, 2);
  row->addWidget(netControl_, 2);
  row->addWidget(bounce_, 2);
  row->addWidget(information_, 3);
  bounce_->hide();
}

void PanelBar::Take(const StationState& state, bool relays) {
  source_->Take(SourceText(state.source));
  netControl_->Take(T(state.netControl));
  bounce_->Take(T(state.bounce));
  if (bounce_->isHidden() == relays) bounce_->setVisible(relays);
  information_->Take(T(state.information));
}

}  // namespace zeb
