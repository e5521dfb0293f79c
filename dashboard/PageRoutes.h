// PageRoutes: the web page: "/" is index.html, its other files are below "/page/". They tell nothing of the
// stations, so everybody may have them: whoever must log on needs them for that.
#pragma once

#include "dashboard/Router.h"

namespace zeb {

void AddPageRoutes(Router& router);

}  // namespace zeb
