// Desk: what every window and dialog of the desktop program works with, put together by its start-up (or a
// test) and passed by reference. Owns nothing; outlives all windows.
//
// Window code decides nothing and reads no clock. What engine code calls may come from inside a task, so it
// only marks itself dirty; drawing happens in a tick of the engine's loop. Dialogs are opened, never
// executed: a loop within the loop would hold up every output.
#pragma once

#include <functional>

#include "core/clsZEBService.h"
#include "dashboard/JournalTail.h"
#include "history/HistoryRequest.h"
#include "outputs/test/OutputTest.h"
#include "platform/Environment.h"

class QWidget;

namespace zeb {

class Boxes;
class frmMain;

struct Desk {
  Environment& environment;
  frmMain& main;
  OutputFactory makeOutput;
  Boxes& boxes;
  JournalTail& journal;            // the last lines of the journal
  OpenHistory openHistory;         // called on a worker; none: no history is kept
  QWidget* frame = nullptr;        // the main window, in front of which boxes open; null before it is there
  std::function<void()> reload{};  // all settings are read again, as zebd does for SIGHUP; none: by `main`
};

}  // namespace zeb
