// PictureRoute: GET /api/v1/services/N/picture, the picture of the item that is on air.
//
// Which file that is comes from whoever sends the items, so it is handed out by the rules under which outputs
// publish it (outputs/file/MediaRules.h), and only when it is a picture of at most kMostPictureBytes.
#pragma once

#include <cstddef>
#include <string>

#include "dashboard/OneWorker.h"
#include "dashboard/Router.h"
#include "dashboard/Stations.h"
#include "platform/Environment.h"

namespace zeb {

class PictureRoute {
 public:
  static constexpr std::size_t kMostPictureBytes = 4 * 1024 * 1024;

  // Both outlive this object, which outlives the router.
  PictureRoute(Environment& environment, Stations& stations);

  void AddTo(Router& router);

 private:
  HttpAnswer Answer(const HttpRequest& request);

  Environment& environment_;
  Stations& stations_;
  OneWorker worker_;
};

}  // namespace zeb
