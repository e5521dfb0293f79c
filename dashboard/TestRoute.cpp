#include "dashboard/TestRoute.h"

#include <boost/json/array.hpp>

#include "dashboard/Json.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

HttpAnswer Answer(Stations& stations, const HttpRequest& request) {
  const int number = WholeNumber<int>(request.Argument("n")).value_or(0);
  if (number < 1 || number > stations.Count()) return ErrorAnswer(404, "there is no such service");
  const Result<OutputName> output = ParseOutputName(request.Argument("type") + request.Argument("k"));
  if (!output) return ErrorAnswer(404, "there is no such output");
  const auto given = stations.Test(number, output.Value());
  if (!given)
    return ErrorAnswer(404, "service " + request.Argument("n") + " has no output " + output.Value().Text());
  const Result<std::vector<TestStep>>& steps = *given;
  if (!steps) return ErrorAnswer(409, steps.Reason());
  boost::json::array list;
  for (const TestStep& step : steps.Value()) list.push_back({{"text", step.Text()}, {"ok", step.ok}});
  return JsonAnswer({{"steps", std::move(list)}});
}

}  // namespace

void AddTestRoute(Router& router, Stations& stations) {
  router.AddTask("POST", "/api/v1/services/{n}/outputs/{type}/{k}/test", Need::kAct,
                 [&stations](const HttpRequest& request) { return Answer(stations, request); });
}

}  // namespace zeb
