#include "app/ControlRoom.h"

#include <utility>

#include "dashboard/PageRoutes.h"
#include "dashboard/TestRoute.h"

namespace zeb {

ControlRoom::ControlRoom(Environment& environment, LocalSockets& localSockets,
                         std::shared_ptr<Secrets> secrets, frmMain& main, JournalTail& journal,
                         OpenHistory openHistory, UtcOffsetOf utcOffset)
    : main_(main),
      stations_(environment, main, [this] { Reload(); }),
      routes_(environment.loop, stations_),
      pictures_(environment, stations_),
      history_(environment.loop, std::move(openHistory), std::move(utcOffset)),
      events_(environment.loop, stations_, journal),
      dashboard_(environment, localSockets, std::move(secrets)) {
  AddPageRoutes(dashboard_.Routes());
  routes_.AddTo(dashboard_.Routes());
  pictures_.AddTo(dashboard_.Routes());
  history_.AddTo(dashboard_.Routes());
  AddTestRoute(dashboard_.Routes(), stations_);
  dashboard_.AddEvents("/api/v1/events", events_.Hub());
}

void ControlRoom::Reload() {
  main_.Reload();
  dashboard_.Reload();
}

}  // namespace zeb
