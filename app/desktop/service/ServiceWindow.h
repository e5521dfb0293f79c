// ServiceWindow: what an operator sees of one service: on air, panels, outputs, items, what listeners see,
// history and journal. Draws from the service's board and asks it to act; decides nothing.
//
// Owned by the frame, which makes it when it is first shown, calls Draw while it is visible (only what
// differs is drawn) and destroys it when the service has gone. On the loop's thread.
#pragma once

#include <QWidget>
#include <memory>

#include "app/desktop/Desk.h"
#include "app/frmService.h"
#include "core/clsZEBTemplate.h"

namespace zeb {

class ServiceWindow : public QWidget {
 public:
  enum class Page { kItems, kListeners, kHistory, kJournal };

  ServiceWindow(Desk& desk, std::shared_ptr<frmService> window);

  const std::shared_ptr<frmService>& Service() const { return window_; }
  void Draw();
  void ShowPage(Page page);
  OutputPtr SelectedOutput() const;  // null: none
  void CopyStatusText() const;       // of the selected output, to the clipboard

 private:
  Desk& desk_;
  const std::shared_ptr<frmService> window_;
};

}  // namespace zeb
