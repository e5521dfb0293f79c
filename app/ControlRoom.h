// ControlRoom: all that shows and steers the running publisher from outside: the local socket, the web page,
// the requests and the events, put together for a program that runs frmMain.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/RunningStations.h"
#include "app/frmMain.h"
#include "dashboard/Dashboard.h"
#include "dashboard/HistoryRoute.h"
#include "dashboard/JournalTail.h"
#include "dashboard/PictureRoute.h"
#include "dashboard/StationEvents.h"
#include "dashboard/StationRoutes.h"
#include "platform/Environment.h"
#include "platform/LocalSockets.h"
#include "platform/Secrets.h"

namespace zeb {

class ControlRoom {
 public:
  // All outlive this object. `secrets` null: nobody can log on.
  ControlRoom(Environment& environment, LocalSockets& localSockets, std::shared_ptr<Secrets> secrets,
              frmMain& main, JournalTail& journal, OpenHistory openHistory, UtcOffsetOf utcOffset);

  // For requests that others answer; before Open.
  Router& Routes() { return dashboard_.Routes(); }
  Stations& Services() { return stations_; }

  void Open() { dashboard_.Open(); }
  void Close() { dashboard_.Close(); }
  void Reload();  // the services and the ways in read their settings again
  std::string Url() const { return dashboard_.Url(); }

 private:
  frmMain& main_;
  RunningStations stations_;
  StationRoutes routes_;
  PictureRoute pictures_;
  HistoryRoute history_;
  StationEvents events_;
  Dashboard dashboard_;  // goes first: its handlers use the others
};

}  // namespace zeb
