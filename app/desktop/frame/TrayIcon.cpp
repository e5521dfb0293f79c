#include "app/desktop/frame/TrayIcon.h"

#include <QStringList>
#include <algorithm>
#include <utility>

#include "app/desktop/frame/AppIcon.h"
#include "app/desktop/frame/Theme.h"
#include "app/desktop/text/Translate.h"

namespace zeb {
namespace {

constexpr std::size_t kMostLines = 5;
constexpr int kBalloonMilliseconds = 8000;

QString Line(const Trouble& trouble) {
  return QString::fromStdString(trouble.service + ", " + trouble.output + ": " + trouble.problem);
}

// A name with "&" is no mnemonic.
QString Escaped(const QString& text) {
  return QString(text).replace('&', "&&");
}

}  // namespace

TrayIcon::TrayIcon(Frame frame) : frame_(std::move(frame)) {
  icon_.setIcon(TrayPicture(worst_));
  icon_.setContextMenu(&menu_);
  SetState(0, 0);
  FillMenu();
  QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] { FillMenu(); });
  QObject::connect(&icon_, &QSystemTrayIcon::activated, &menu_,
                   [this](QSystemTrayIcon::ActivationReason reason) {
                     if (reason != QSystemTrayIcon::Context) frame_.open();
                   });
  QObject::connect(&icon_, &QSystemTrayIcon::messageClicked, &menu_, [this] { frame_.open(); });
}

void TrayIcon::FillMenu() {
  menu_.clear();
  QAction* open = menu_.addAction(T("&Open"), [this] { frame_.open(); });
  menu_.setDefaultAction(open);
  menu_.addSeparator();
  const std::vector<Trouble> troubles = frame_.troubles();
  for (const Trouble& trouble : troubles)
    menu_.addAction(MarkIcon(Severity::kFailing, menu_.palette()), Escaped(Line(trouble)),
                    [this] { frame_.open(); });
  if (!troubles.empty()) menu_.addSeparator();
  QMenu* force = menu_.addMenu(T("&Force Update"));
  int number = 0;
  for (const std::string& name : frame_.services()) {
    ++number;
    force->addAction(Escaped(QString::fromStdString(name)), [this, number] { frame_.forceUpdate(number); });
  }
  force->setEnabled(number > 0);
  menu_.addSeparator();
  menu_.addAction(T("E&xit"), [this] { frame_.exit(); });
}

void TrayIcon::SetState(std::size_t failing, int services) {
  const Severity worst = failing > 0 ? Severity::kFailing : services > 0 ? Severity::kOk : Severity::kOff;
  if (worst != worst_) icon_.setIcon(TrayPicture(worst));
  worst_ = worst;
  const QString state = failing > 0    ? T("%1 failing").arg(failing)
                        : services > 0 ? T("all is well")
                                       : T("no service yet");
  if (const QString text = "ZEB: " + state; text != icon_.toolTip()) icon_.setToolTip(text);
}

void TrayIcon::Tell(const TroubleWatch::News& news) {
  if (!news.begun.empty())
    return Balloon(
        news.begun.size() == 1 ? T("An output fails") : T("%1 outputs fail").arg(news.begun.size()),
        news.begun, QSystemTrayIcon::Warning);
  if (!news.ended.empty())
    Balloon(news.ended.size() == 1 ? T("An output works again")
                                   : T("%1 outputs work again").arg(news.ended.size()),
            news.ended, QSystemTrayIcon::Information);
}

void TrayIcon::Balloon(const QString& title, const std::vector<Trouble>& troubles,
                       QSystemTrayIcon::MessageIcon icon) {
  QStringList lines;
  for (const Trouble& trouble : troubles) {
    if (lines.size() == static_cast<qsizetype>(kMostLines)) {
      lines << "…";
      break;
    }
    lines << (icon == QSystemTrayIcon::Warning
                  ? Line(trouble)
                  : QString::fromStdString(trouble.service + ", " + trouble.output));
  }
  balloon_ = title + "\n" + lines.join("\n");
  if (icon_.isVisible() && QSystemTrayIcon::supportsMessages())
    icon_.showMessage(title, lines.join("\n"), icon, kBalloonMilliseconds);
}

}  // namespace zeb
