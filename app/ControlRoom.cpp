#include "app/ControlRoom.h"

#include <utility>

#include "dashboard/PageRoutes.h"
#include "dashboard/TestRoute.h"

namespace zeb {

ControlRoom::ControlRoom(Environment& environment, LocalSockets& localSockets,
                         std::shared_ptr<Secrets> secrets, frmMain& main, JournalTail& journal)
    : main_(main),
      stations_(environment, main, [this] { Reload(); }),
      routes_(environment.loop, stations_),
      events_(environment.loop, stations_, journal),
      dashboard_(environment, localSockets, std::move(secrets)) {
  AddPageRoutes(dashboard_.Routes());
  routes_.AddTo(dashboard_.Routes());
  AddTestRoute(dashboard_.Routes(), stations_);
  dashboard_.AddEvents("/api/v1/events", events_.Hub());
}

void ControlRoom::Reload() {
  main_.Reload();
  dashboard_.Reload();
}

}  // namespace zeb
