#include "dashboard/StationRoutes.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "dashboard/CartSearch.h"
#include "dashboard/ItemBody.h"
#include "dashboard/Json.h"
#include "dashboard/Metrics.h"
#include "dashboard/StationJson.h"
#include "dashboard/StationList.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kTurn = 10ms;  // before others have theirs
constexpr Duration kWorkLimit = 10s;

HttpAnswer NoContent() {
  return {204, "", "", {}};
}

HttpAnswer NoStation() {
  return ErrorAnswer(404, "there is no such service");
}

HttpAnswer Busy() {
  HttpAnswer answer = ErrorAnswer(503, "an earlier request of this kind still runs");
  answer.headers.emplace_back("Retry-After", "5");
  return answer;
}

// A number of the query: `otherwise` when it is not given; nothing when it is none above 0.
std::optional<int> QueryNumber(const HttpRequest& request, std::string_view name, int otherwise) {
  if (!request.HasQuery(name)) return otherwise;
  const auto number = WholeNumber<int>(request.Query(name));
  return number.value_or(0) > 0 ? number : std::nullopt;
}

struct PreviewWork {
  std::string text, simpleText, escape;
  bool urlEncode = false;
  SnapshotPtr snapshot;

  std::string Do() const {
    UploadFileList files;
    return ExpandTemplate(text, *snapshot, simpleText, files,
                          {.urlEncode = urlEncode, .escape = EscapeFor(escape, "", text)});
  }
};

Result<PreviewWork> ReadPreview(std::string_view body) {
  const auto object = ReadJsonObject(body);
  if (!object) return object.AsFailure();
  PreviewWork work;
  const std::pair<const char*, std::string PreviewWork::*> texts[] = {
      {"template", &PreviewWork::text},
      {"simpleText", &PreviewWork::simpleText},
      {"escape", &PreviewWork::escape}};
  for (const auto& [name, member] : texts) {
    Result<std::string> text = JsonText(object.Value(), name);
    if (!text) return text.AsFailure();
    work.*member = std::move(text.Value());
  }
  if (work.simpleText.empty()) work.simpleText = kDefaultSimpleTextFormat;
  if (!EscapeChoiceByName(work.escape)) return Failure{"\"escape\" takes html, xml, json or auto"};
  if (const auto* encode = object.Value().if_contains("urlEncode")) {
    if (!encode->is_bool()) return Failure{"\"urlEncode\" takes true or false"};
    work.urlEncode = encode->as_bool();
  }
  return work;
}

boost::json::object JsonOf(const FoundCart& found, const ServiceSettings& settings) {
  const auto line = [&](std::int32_t number) {
    return number >= 1 && number <= 3 ? found.cart.lines[static_cast<std::size_t>(number) - 1]
                                      : std::string();
  };
  return {{"cart", found.number},
          {"title", line(settings.CartItemNameLine)},
          {"artist", line(settings.CartArtist1Line)}};
}

}  // namespace

StationRoutes::StationRoutes(EventLoop& loop, Stations& stations)
    : loop_(loop), stations_(stations), worker_(loop, kWorkLimit) {}

void StationRoutes::AddTo(Router& router) {
  AddReading(router);
  AddActing(router);
  AddKeeping(router);
}

void StationRoutes::AddReading(Router& router) {
  const auto bound = [this](HttpAnswer (StationRoutes::*work)(const HttpRequest&)) {
    return [this, work](const HttpRequest& request) { return (this->*work)(request); };
  };
  router.AddTask("GET", "/api/v1/services", Need::kRead, bound(&StationRoutes::List));
  router.Add("GET", "/api/v1/services/{n}", Need::kRead,
             [this](const HttpRequest& request) { return One(request); });
  router.AddTask("GET", "/metrics", Need::kRead, bound(&StationRoutes::Metrics));
  router.AddTask("GET", "/api/v1/services/{n}/carts", Need::kRead, bound(&StationRoutes::Carts));
  router.AddTask("POST", "/api/v1/services/{n}/preview", Need::kRead, bound(&StationRoutes::Preview));
}

void StationRoutes::AddActing(Router& router) {
  AddMessage(router, "items/current",
             [](std::string_view body) { return ItemMessageOf(body, ManualSlot::kCurrent); });
  AddMessage(router, "items/next",
             [](std::string_view body) { return ItemMessageOf(body, ManualSlot::kNext); });
  AddMessage(router, "items/previous",
             [](std::string_view body) { return ItemMessageOf(body, ManualSlot::kPrevious); });
  AddMessage(router, "items/coming",
             [](std::string_view body) { return ItemMessageOf(body, ManualSlot::kComingSoon); });
  AddMessage(router, "promote", PromoteMessageOf);
  AddMessage(router, "presenter", PresenterMessageOf);
  AddMessage(router, "show", ShowMessageOf);
  router.Add("POST", "/api/v1/services/{n}/update", Need::kAct, [this](const HttpRequest& request) {
    int number = 0;
    if (!Has(request, number)) return NoStation();
    stations_.Update(number);
    return NoContent();
  });
  router.Add("POST", "/api/v1/update", Need::kAct, [this](const HttpRequest&) {
    for (int number = 1; number <= stations_.Count(); ++number) stations_.Update(number);
    return NoContent();
  });
}

// What changes settings is for the machine's own commands.
void StationRoutes::AddKeeping(Router& router) {
  router.Add("POST", "/api/v1/reload", Need::kLocal, [this](const HttpRequest&) {
    stations_.Reload();
    return NoContent();
  });
  router.Add("DELETE", "/api/v1/services/{n}", Need::kLocal, [this](const HttpRequest& request) {
    int number = 0;
    if (!Has(request, number)) return NoStation();
    const Outcome removed = stations_.Remove(number);
    return removed ? NoContent() : ErrorAnswer(409, removed.Reason());
  });
}

void StationRoutes::AddMessage(Router& router, const std::string& path, MessageOf messageOf) {
  router.Add(
      "POST", "/api/v1/services/{n}/" + path, Need::kAct,
      [this, messageOf](const HttpRequest& request) { return Take(request, messageOf(request.body)); });
}

bool StationRoutes::Has(const HttpRequest& request, int& number) const {
  number = WholeNumber<int>(request.Argument("n")).value_or(0);
  return number >= 1 && number <= stations_.Count();
}

HttpAnswer StationRoutes::Take(const HttpRequest& request, const Result<std::string>& message) {
  int number = 0;
  if (!Has(request, number)) return NoStation();
  if (!message) return ErrorAnswer(400, message.Reason());
  stations_.Take(number, message.Value());
  return NoContent();
}

HttpAnswer StationRoutes::One(const HttpRequest& request) const {
  int number = 0;
  if (!Has(request, number)) return NoStation();
  return JsonAnswer(zeb::JsonOf(stations_.State(number), loop_.UtcOffset()));
}

// Services that are there from `first` to `last`, with others having their turn in between; until `work` has
// had enough.
void StationRoutes::ForEach(int first, int last, const std::function<bool(int number)>& work) {
  MonotonicTime turn = loop_.Monotonic();
  for (int number = first; number <= last && number <= stations_.Count() && work(number); ++number) {
    if (loop_.Monotonic() - turn < kTurn) continue;
    loop_.Wait(Duration::zero());
    turn = loop_.Monotonic();
  }
}

HttpAnswer StationRoutes::List(const HttpRequest& request) {
  const auto from = QueryNumber(request, "from", 1);
  const auto count = QueryNumber(request, "count", std::numeric_limits<int>::max());
  if (!from || !count) return ErrorAnswer(400, "\"from\" and \"count\" take numbers above 0");
  HttpAnswer answer;
  answer.body = boost::json::serialize(ListHeadJson(loop_));
  answer.body.pop_back();
  answer.body += ",\"services\":[";
  std::string& body = answer.body;
  const auto last = std::min<std::int64_t>(std::int64_t{*from} + *count - 1, stations_.Count());
  ForEach(*from, static_cast<int>(last), [&](int number) {
    if (number > *from) body += ',';
    body += boost::json::serialize(zeb::JsonOf(stations_.State(number), loop_.UtcOffset()));
    return body.size() <= kMostAnswerBytes;
  });
  if (body.size() > kMostAnswerBytes)
    return ErrorAnswer(413, "the list is too long: ask for parts of it with \"from\" and \"count\"");
  answer.body += "]}\n";
  return answer;
}

HttpAnswer StationRoutes::Metrics(const HttpRequest&) {
  std::vector<StationState> states;
  ForEach(1, stations_.Count(), [&](int number) {
    states.push_back(stations_.State(number));
    return true;
  });
  HttpAnswer answer;
  answer.type = kMetricsContentType;
  answer.body = MetricsText(states, loop_.Now());
  return answer;
}

HttpAnswer StationRoutes::Preview(const HttpRequest& request) {
  int number = 0;
  if (!Has(request, number)) return NoStation();
  Result<PreviewWork> work = ReadPreview(request.body);
  if (!work) return ErrorAnswer(400, work.Reason());
  work.Value().snapshot = stations_.Present(number);
  const auto text = worker_.Run([work = std::move(work.Value())] { return work.Do(); });
  if (!text) return Busy();
  const std::string_view shown = FirstCharacters(*text, kMostPreviewCharacters);
  return JsonAnswer({{"text", shown}, {"cut", shown.size() < text->size()}});
}

HttpAnswer StationRoutes::Carts(const HttpRequest& request) {
  int number = 0;
  if (!Has(request, number)) return NoStation();
  const auto table = stations_.Carts().All();
  if (!table) return ErrorAnswer(404, "this publisher has no carts");
  const auto found = worker_.Run(
      [table, query = request.Query("q")] { return SearchCarts(*table, query, kMostFoundCarts); });
  if (!found) return Busy();
  if (!Has(request, number)) return NoStation();
  boost::json::array carts;
  for (const FoundCart& one : *found) carts.push_back(JsonOf(one, stations_.Settings(number)));
  return JsonAnswer({{"carts", std::move(carts)}});
}

}  // namespace zeb
