// TestRoute: POST /api/v1/services/{n}/outputs/{type}/{k}/test tries one output (outputs/test/OutputTest.h)
// and answers {"steps":[{"text","ok"}]}.
#pragma once

#include "dashboard/Router.h"
#include "dashboard/Stations.h"

namespace zeb {

// `stations` outlives the router.
void AddTestRoute(Router& router, Stations& stations);

}  // namespace zeb
