// ServiceWindow: what an operator sees of one service: on air, panels, outputs, items, what listeners see,
// history and journal. Draws from the service's board and asks it to act; decides nothing.
//
// Owned by the frame, which makes it when it is first shown, calls Draw while it is visible (only what
// differs is drawn) and destroys it when the service has gone. On the loop's thread.
#pragma once

#include <QWidget>
#include <map>
#include <memory>
#include <optional>

#include "app/desktop/Desk.h"
#include "app/desktop/service/GridModel.h"
#include "app/frmService.h"
#include "core/clsZEBTemplate.h"

class QPushButton;
class QSplitter;
class QTabWidget;

namespace zeb {

class AttentionLine;
class GridView;
class HistoryView;
class JournalView;
class ListenersView;
class PanelBar;
class ServiceHead;

class ServiceWindow : public QWidget {
 public:
  enum class Page { kItems, kListeners, kHistory, kJournal };

  ServiceWindow(Desk& desk, std::shared_ptr<frmService> window);
  ~ServiceWindow() override;

  const std::shared_ptr<frmService>& Service() const { return window_; }
  // Cheap when nothing has changed. Outputs are looked at each second, the items as often as the service's
  // UpdateDisplayInterval says, both at once when something has happened.
  void Draw();
  void ShowPage(Page page);
  OutputPtr SelectedOutput() const;  // null: none
  void CopyStatusText() const;       // of the selected output, to the clipboard
  // The upload of the selected output is given up; it is tried again a little later.
  void CancelSending() const;

  // Column widths, the splitter and the page, as a text that the frame may store. What does not fit (any
  // more) is passed over.
  QString SaveState() const;
  void RestoreState(const QString& saved);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  // What an output is to be found by when it has been replaced by one with other settings.
  struct Place {
    OutputType type;
    int number;
  };
  QWidget* MakeOutputs();
  QWidget* MakePages();
  void AddOutputActions();
  void MakeMarks();
  void DrawStation(bool items);
  void DrawOutputs(const StationState& state);
  void KeepChoice(const StationState& state);
  void OutputChosen();

  Desk& desk_;
  const std::shared_ptr<frmService> window_;
  GridModel outputs_, items_;
  ServiceHead* head_;
  AttentionLine* attention_;
  PanelBar* panels_;
  GridView *outputGrid_, *itemGrid_;
  ListenersView* listeners_;
  HistoryView* history_;
  JournalView* journal_;
  QTabWidget* pages_;
  QSplitter* splitter_;

  std::optional<std::uint64_t> version_;  // of the board, as it was drawn last
  int itemsVersion_ = -1;
  MonotonicTime nextOutputs_{}, nextItems_{};
  bool sending_ = false;     // a percentage is shown
  bool showsPlace_ = false;  // a choice is being restored
  std::optional<Place> chosen_;
};

}  // namespace zeb
