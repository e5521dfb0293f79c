#include "app/desktop/frame/WindowPlacement.h"

#include <QApplication>
#include <QScreen>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <algorithm>
#include <array>
#include <limits>

namespace zeb {
namespace {

constexpr std::array<const char*, 3> kStates = {"normal", "maximised", "minimised"};
constexpr int kSmallest = 80, kFarthest = 100'000;

int Distance(const QRect& one, const QRect& other) {
  return (one.center() - other.center()).manhattanLength();
}

const ScreenPlace& BestScreen(const QRect& wanted, const std::string& name,
                              const std::vector<ScreenPlace>& screens) {
  const auto same =
      std::find_if(screens.begin(), screens.end(), [&](const ScreenPlace& one) { return one.name == name; });
  if (same != screens.end() && same->available.intersects(wanted)) return *same;
  return *std::min_element(screens.begin(), screens.end(),
                           [&](const ScreenPlace& one, const ScreenPlace& other) {
                             return Distance(one.available, wanted) < Distance(other.available, wanted);
                           });
}

}  // namespace

// A name of a screen holds no comma; should one, it is not needed to find the place.
std::string Placement::ToText() const {
  const QString name = QString::fromStdString(screen).remove(',');
  return QStringLiteral("%1,%2,%3,%4,%5,%6")
      .arg(normal.x())
      .arg(normal.y())
      .arg(normal.width())
      .arg(normal.height())
      .arg(name, QLatin1String(kStates.at(static_cast<std::size_t>(state))))
      .toStdString();
}

Placement Placement::FromText(std::string_view text) {
  const QStringList parts = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).split(',');
  if (parts.size() != 6) return {};
  std::array<int, 4> numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    bool right = false;
    numbers.at(i) = parts.at(static_cast<qsizetype>(i)).toInt(&right);
    if (!right || std::abs(numbers.at(i)) > kFarthest) return {};
  }
  if (numbers[2] < kSmallest || numbers[3] < kSmallest) return {};
  Placement placement{QRect(numbers[0], numbers[1], numbers[2], numbers[3]), parts[4].toStdString(),
                      WindowState::kNormal};
  for (std::size_t i = 0; i < kStates.size(); ++i)
    if (parts[5] == QLatin1String(kStates.at(i))) placement.state = static_cast<WindowState>(i);
  return placement;
}

QRect Visible(const QRect& wanted, const std::string& screen, const std::vector<ScreenPlace>& screens) {
  const QRect available = BestScreen(wanted, screen, screens).available;
  QRect place(wanted.topLeft(), wanted.size().boundedTo(available.size()));
  place.moveLeft(std::clamp(place.left(), available.left(), available.right() - place.width() + 1));
  place.moveTop(std::clamp(place.top(), available.top(), available.bottom() - place.height() + 1));
  return place;
}

std::vector<ScreenPlace> PresentScreens() {
  std::vector<ScreenPlace> screens;
  for (const QScreen* screen : QGuiApplication::screens())
    screens.push_back({screen->name().toStdString(), screen->availableGeometry()});
  return screens;
}

Placement PlacementOf(const QWidget& window) {
  Placement placement;
  placement.normal = window.normalGeometry().isValid() ? window.normalGeometry() : window.geometry();
  if (window.isWindow() && window.screen() != nullptr)
    placement.screen = window.screen()->name().toStdString();
  if (window.isMaximized()) placement.state = WindowState::kMaximised;
  if (window.isMinimized()) placement.state = WindowState::kMinimised;
  return placement;
}

void Place(QWidget& window, const Placement& placement, const std::vector<ScreenPlace>& screens) {
  if (!placement.Known() || screens.empty()) return;
  window.setGeometry(Visible(placement.normal, placement.screen, screens));
  if (placement.state == WindowState::kMaximised) window.setWindowState(Qt::WindowMaximized);
}

}  // namespace zeb
