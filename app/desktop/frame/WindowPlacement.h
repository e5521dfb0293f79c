// Placement: where a window stands, in a form that outlives the screens: stored as
// "x,y,w,h,screen,state". A window whose screen has gone, or was larger, is moved and made smaller until all
// of it is to be seen: on its own screen when that is there, else on the nearest.
#pragma once

#include <QRect>
#include <string>
#include <string_view>
#include <vector>

class QWidget;

namespace zeb {

enum class WindowState { kNormal, kMaximised, kMinimised };

struct ScreenPlace {
  std::string name;
  QRect available;  // without panels and docks
};

struct Placement {
  QRect normal;  // while it is neither maximised nor minimised; null: nothing is known
  std::string screen;
  WindowState state = WindowState::kNormal;

  bool Known() const { return normal.isValid(); }
  std::string ToText() const;
  // Not known when it is no placement, or no window has such a size.
  static Placement FromText(std::string_view text);
};

// The part of `wanted` that may be used on these screens (of which there is one at least).
QRect Visible(const QRect& wanted, const std::string& screen, const std::vector<ScreenPlace>& screens);

std::vector<ScreenPlace> PresentScreens();
Placement PlacementOf(const QWidget& window);
// Of a top-level window. A frame that was minimised comes back normal.
void Place(QWidget& window, const Placement& placement, const std::vector<ScreenPlace>& screens);

}  // namespace zeb
