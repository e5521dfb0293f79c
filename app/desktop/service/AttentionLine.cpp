#include "app/desktop/service/AttentionLine.h"

#include <QAccessible>
#include <algorithm>
#include <utility>

#include "app/desktop/service/SeverityMark.h"
#include "app/desktop/service/StationRows.h"
#include "app/desktop/text/Translate.h"

namespace zeb {

AttentionLine::AttentionLine(QWidget* parent) : ElidedLabel("attention", parent) {
  QFont bold = font();
  bold.setBold(true);
  setFont(bold);
  hide();
  onBegins = [this] {
    QAccessibleEvent renamed(this, QAccessible::NameChanged), alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&renamed);
    QAccessible::updateAccessibility(&alert);
  };
}

void AttentionLine::Take(const std::vector<GridRow>& outputs) {
  std::set<std::uint64_t> failing;
  QStringList texts;
  for (const GridRow& output : outputs) {
    if (output.mark != kFailingMark) continue;
    failing.insert(output.key);
    const QString problem = output.cells[kProblemColumn].text;
    const QString text = T("%1 is failing").arg(output.cells[0].text);
    texts << (problem.isEmpty() ? text : text + ": " + problem);
  }
  ElidedLabel::Take(texts.isEmpty() ? QString() : QStringLiteral("▲ ") + texts.join(QStringLiteral(" · ")));
  setVisible(!texts.isEmpty());
  const std::set<std::uint64_t> before = std::exchange(failing_, std::move(failing));
  if (std::includes(before.begin(), before.end(), failing_.begin(), failing_.end())) return;
  onBegins();
}

}  // namespace zeb
