// ServiceArea: the middle of the frame, in which the services' windows stand. A service's window is made when
// it is first shown and goes when it is closed; the service itself runs on either way.
//
// Owned by the frame, which tells of services that have gone and draws in its tick.
#pragma once

#include <QMdiArea>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "app/desktop/Desk.h"
#include "app/desktop/frame/FrameSettings.h"
#include "app/desktop/service/ServiceWindow.h"

class QMdiSubWindow;

namespace zeb {

class ServiceArea : public QMdiArea {
 public:
  ServiceArea(Desk& desk, const FrameSettings& settings);
  ~ServiceArea() override;

  // Its window before the others; made when there is none yet.
  ServiceWindow* Show(const std::shared_ptr<frmService>& service);
  ServiceWindow* Active() const;                             // null: no window is open
  ServiceWindow* WindowOf(const frmService* service) const;  // null: it has none
  std::vector<ServiceWindow*> Windows() const;               // in the order in which they were opened
  void CloseGone(const frmMain& main);
  void CloseAll();
  void Draw();  // what can be seen of the windows

  // Where the windows stand, and which are open, the active one last.
  std::vector<FrameSettings::ServicePlace> Places() const;
  std::vector<int> Open() const;

  std::function<void()> onActivated;           // another window, or none, is active
  std::function<void(ServiceWindow&)> onMade;  // a window has been made

 private:
  void PlaceNew(QMdiSubWindow& frame, const Placement& kept);

  Desk& desk_;
  const FrameSettings& settings_;
  std::map<const frmService*, QMdiSubWindow*> frames_;
  QObject gone_;  // hears of frames that go; the area itself is cut off from them before
};

}  // namespace zeb
