#include "app/desktop/frame/ServiceArea.h"

#include <QMdiSubWindow>
#include <algorithm>

#include "app/desktop/frame/AppIcon.h"
#include "app/frmMain.h"

namespace zeb {

ServiceArea::ServiceArea(Desk& desk, const FrameSettings& settings) : desk_(desk), settings_(settings) {
  setObjectName("ServiceArea");
  setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setTabsClosable(true);
  setTabsMovable(true);
  setDocumentMode(true);
  QObject::connect(this, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow*) {
    if (onActivated) onActivated();
  });
}

ServiceArea::~ServiceArea() {
  onActivated = nullptr;
}

ServiceWindow* ServiceArea::Show(const std::shared_ptr<frmService>& service) {
  if (ServiceWindow* open = WindowOf(service.get())) {
    QMdiSubWindow* frame = frames_.at(service.get());
    if (frame->isMinimized()) frame->showNormal();
    setActiveSubWindow(frame);
    return open;
  }
  auto* window = new ServiceWindow(desk_, service);
  QMdiSubWindow* frame = addSubWindow(window);
  frame->setAttribute(Qt::WA_DeleteOnClose);
  frame->setWindowIcon(AppIcon());
  frames_[service.get()] = frame;
  QObject::connect(frame, &QObject::destroyed, &gone_, [this, gone = service.get()] { frames_.erase(gone); });
  if (onMade) onMade(*window);
  window->Draw();
  const FrameSettings::ServicePlace kept = settings_.ReadWindow(service->service().ServiceNumber());
  PlaceNew(*frame, kept.placement);
  if (!kept.view.empty()) window->RestoreState(QString::fromStdString(kept.view));
  setActiveSubWindow(frame);
  return window;
}

// One that stood somewhere comes back there, as far as the frame is large enough; the first fills the frame.
void ServiceArea::PlaceNew(QMdiSubWindow& frame, const Placement& kept) {
  const bool alone = frames_.size() == 1;
  if (kept.Known() && viewport()->width() > 0) {
    frame.setGeometry(Visible(kept.normal, "", {{"", viewport()->rect()}}));
    if (kept.state == WindowState::kMaximised) return frame.showMaximized();
    return frame.show();
  }
  const QMdiSubWindow* present = currentSubWindow();
  if (alone || (present != nullptr && present->isMaximized())) return frame.showMaximized();
  frame.show();
}

ServiceWindow* ServiceArea::WindowOf(const frmService* service) const {
  const auto found = frames_.find(service);
  return found == frames_.end() ? nullptr : dynamic_cast<ServiceWindow*>(found->second->widget());
}

// The one that was active stays so while a dialog or the overview has the keyboard.
ServiceWindow* ServiceArea::Active() const {
  const QMdiSubWindow* frame = currentSubWindow();
  return frame == nullptr ? nullptr : dynamic_cast<ServiceWindow*>(frame->widget());
}

std::vector<ServiceWindow*> ServiceArea::Windows() const {
  std::vector<ServiceWindow*> windows;
  for (const QMdiSubWindow* frame : subWindowList())
    if (auto* window = dynamic_cast<ServiceWindow*>(frame->widget())) windows.push_back(window);
  return windows;
}

void ServiceArea::CloseGone(const frmMain& main) {
  std::vector<QMdiSubWindow*> gone;
  for (const auto& [service, frame] : frames_) {
    bool present = false;
    for (int number = 1; number <= main.NumberServices() && !present; ++number)
      present = main.Window(number).get() == service;
    if (!present) gone.push_back(frame);
  }
  for (QMdiSubWindow* frame : gone) delete frame;
}

void ServiceArea::CloseAll() {
  for (const auto frames = frames_; const auto& [service, frame] : frames) delete frame;
}

void ServiceArea::Draw() {
  for (ServiceWindow* window : Windows()) {
    if (!window->isVisible()) continue;
    window->Draw();
    if (window->parentWidget()->windowTitle() != window->windowTitle())
      window->parentWidget()->setWindowTitle(window->windowTitle());
  }
}

std::vector<FrameSettings::ServicePlace> ServiceArea::Places() const {
  std::vector<FrameSettings::ServicePlace> places;
  for (const ServiceWindow* window : Windows())
    places.push_back({window->Service()->service().ServiceNumber(), PlacementOf(*window->parentWidget()),
                      window->SaveState().toStdString()});
  return places;
}

std::vector<int> ServiceArea::Open() const {
  std::vector<int> open;
  for (const ServiceWindow* window : Windows()) open.push_back(window->Service()->service().ServiceNumber());
  if (const ServiceWindow* active = Active()) {
    const int number = active->Service()->service().ServiceNumber();
    std::erase(open, number);
    open.push_back(number);
  }
  return open;
}

}  // namespace zeb
