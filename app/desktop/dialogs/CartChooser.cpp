#include "app/desktop/dialogs/CartChooser.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>
#include <vector>

#include "app/desktop/Boxes.h"
#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

struct Line {
  std::int32_t number = 0;
  QString text;
};

std::vector<Line> LinesOf(const CartTable& carts) {
  std::vector<Line> lines;
  lines.reserve(carts.size());
  for (const auto& [number, cart] : carts) {
    QStringList parts{QString::number(number)};
    for (const std::string& line : cart.lines)
      if (!line.empty()) parts << QString::fromStdString(line);
    lines.push_back({number, parts.join(" – ")});
  }
  std::sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.number < b.number; });
  return lines;
}

void Show(QListWidget& list, const std::vector<Line>& lines, const QString& wanted) {
  list.clear();
  for (const Line& line : lines) {
    if (list.count() == CartChooser::kMostListed) break;
    if (!line.text.contains(wanted, Qt::CaseInsensitive)) continue;
    auto* item = new QListWidgetItem(line.text, &list);
    item->setData(Qt::UserRole, line.number);
  }
  if (list.count() > 0) list.setCurrentRow(0);
}

}  // namespace

CartChooser::CartChooser(Desk& desk) : desk_(desk), input_(new QLineEdit(this)) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  auto* choose = new QPushButton(T("Choose..."), this);
  choose->setObjectName("ChooseCart");
  choose->setAccessibleName(T("Choose a cart"));
  choose->setAutoDefault(false);
  row->addWidget(input_);
  row->addWidget(choose);
  setFocusProxy(input_);
  connect(choose, &QPushButton::clicked, this, [this] { OpenList(); });
}

std::string CartChooser::Text() const {
  return input_->text().toStdString();
}

void CartChooser::SetText(const std::string& text) {
  input_->setText(QString::fromStdString(text));
}

void CartChooser::OpenList() {
  const std::shared_ptr<const CartTable> carts = desk_.environment.carts.All();
  if (!carts || carts->empty())
    return desk_.boxes.Show(window(), MessageIcon::kInformation,
                            "There is no list of carts; the number can be typed");
  auto* dialog = new QDialog(window());
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(T("Choose a cart"));
  Fill(*dialog, *carts);
  dialog->open();
}

void CartChooser::Fill(QDialog& dialog, const CartTable& carts) {
  auto* whole = new QVBoxLayout(&dialog);
  auto* search = new QLineEdit;
  search->setObjectName("CartSearch");
  search->setAccessibleName(T("Search"));
  auto* label = new QLabel(T("&Search:"));
  label->setBuddy(search);
  auto* list = new QListWidget;
  list->setObjectName("Carts");
  list->setAccessibleName(T("Carts"));
  list->setMinimumSize(fontMetrics().averageCharWidth() * 60, fontMetrics().lineSpacing() * 16);
  auto* ok = new QPushButton(T("OK"));
  ok->setDefault(true);
  auto* cancel = new QPushButton(T("Cancel"));
  cancel->setAutoDefault(false);
  auto* top = new QHBoxLayout;
  top->addWidget(label);
  top->addWidget(search);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  whole->addLayout(top);
  whole->addWidget(list);
  whole->addLayout(buttons);

  const auto lines = std::make_shared<const std::vector<Line>>(LinesOf(carts));
  Show(*list, *lines, "");
  connect(search, &QLineEdit::textChanged, list,
          [list, lines](const QString& wanted) { Show(*list, *lines, wanted); });
  connect(list, &QListWidget::itemDoubleClicked, ok, [ok] { ok->click(); });
  connect(ok, &QPushButton::clicked, this, [this, list, shown = &dialog] {
    const QListWidgetItem* item = list->currentItem();
    if (item == nullptr) return;
    const std::string number = std::to_string(item->data(Qt::UserRole).toInt());
    SetText(number);
    shown->accept();
    if (onChosen) onChosen(number);
  });
  connect(cancel, &QPushButton::clicked, &dialog, [shown = &dialog] { shown->reject(); });
}

}  // namespace zeb
