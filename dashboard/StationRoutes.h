// StationRoutes: the requests about the stations, below /api/v1. docs/openapi.json describes them.
//
// Nothing here holds the loop up: long lists are put together with others in between, and templates and carts
// are worked on by a worker.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "dashboard/OneWorker.h"
#include "dashboard/Router.h"
#include "dashboard/Stations.h"
#include "platform/EventLoop.h"

namespace zeb {

class StationRoutes {
 public:
  static constexpr std::size_t kMostPreviewCharacters = 100'000;  // of an expanded template; the rest is cut
  static constexpr std::size_t kMostFoundCarts = 50;

  // Both outlive this object, which outlives the router.
  StationRoutes(EventLoop& loop, Stations& stations);

  void AddTo(Router& router);

 private:
  using MessageOf = Result<std::string> (*)(std::string_view body);
  void AddReading(Router& router);
  void AddActing(Router& router);
  void AddKeeping(Router& router);
  void AddMessage(Router& router, const std::string& path, MessageOf messageOf);

  bool Has(const HttpRequest& request, int& number) const;
  void ForEach(int first, int last, const std::function<bool(int number)>& work);
  HttpAnswer Metrics(const HttpRequest& request);
  HttpAnswer List(const HttpRequest& request);
  HttpAnswer One(const HttpRequest& request) const;
  HttpAnswer Preview(const HttpRequest& request);
  HttpAnswer Carts(const HttpRequest& request);
  HttpAnswer Take(const HttpRequest& request, const Result<std::string>& message);

  EventLoop& loop_;
  Stations& stations_;
  OneWorker worker_;
};

}  // namespace zeb
