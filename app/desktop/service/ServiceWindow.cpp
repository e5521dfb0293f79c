#include "app/desktop/service/ServiceWindow.h"

#include <utility>

namespace zeb {

ServiceWindow::ServiceWindow(Desk& desk, std::shared_ptr<frmService> window)
    : desk_(desk), window_(std::move(window)) {}

void ServiceWindow::Draw() {
  setWindowTitle(QString::fromStdString(window_->Board().State().name));
  Q_UNUSED(desk_);
}
void ServiceWindow::ShowPage(Page) {}
OutputPtr ServiceWindow::SelectedOutput() const {
  return nullptr;
}
void ServiceWindow::CopyStatusText() const {}

}  // namespace zeb
