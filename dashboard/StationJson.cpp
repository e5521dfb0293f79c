#include "dashboard/StationJson.h"

#include <boost/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/ItemType.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {

namespace json = boost::json;

json::value MomentOrNull(const std::optional<WallTime>& moment, std::chrono::seconds utcOffset) {
  if (!moment) return nullptr;
  return json::string(Rfc3339(*moment, utcOffset));
}

json::value MillisecondsOrNull(const std::optional<Duration>& time) {
  if (!time) return nullptr;
  return std::chrono::duration<double, std::milli>(*time).count();
}

std::string_view WordOf(SourceState::Kind kind) {
  switch (kind) {
    case SourceState::Kind::kControlLink:
      return "control link";
    case SourceState::Kind::kFile:
      return "file";
    case SourceState::Kind::kNone:
      break;
  }
  return "none";
}

json::array Strings(const std::vector<std::string>& texts) {
  return json::array(texts.begin(), texts.end());
}

std::vector<std::string> PicturesOf(const clsZEBItemInfo& item) {
  std::vector<std::string> pictures;
  for (int i = 1; i <= item.NumberPictures(); ++i) pictures.push_back(item.PictureFileName(i));
  return pictures;
}

json::array Items(const std::vector<clsZEBItemInfo>& items) {
  json::array array;
  for (const clsZEBItemInfo& item : items) array.push_back(JsonOf(item));
  return array;
}

json::array Pages(const Shown& shown) {
  json::array pages;
  for (const Shown::Page& page : shown.pages)
    pages.push_back({{"name", page.name},
                     {"bytes", page.bytes},
                     {"firstLines", FirstLines(page.beginning)},
                     {"sha256", page.digest.Text()}});
  return pages;
}

}  // namespace

json::object JsonOf(const clsZEBItemInfo& item) {
  return {{"title", item->ItemName},
          {"artists", item->Artists},
          {"type", ItemTypeText(item->ItemType)},
          {"typeCode", item->ItemType},
          {"album", item->AlbumName},
          {"cart", item->CartNumber},
          {"reference", item->ItemReference},
          {"start",
           item->ItemStartDate == 0 ? std::string() : XmlDateTime(item->ItemStartDate, item->ItemStartTime)},
          {"seconds", item->CartItemLength},
          {"notes", item->Notes},
          {"pictures", Strings(PicturesOf(item))}};
}

json::object JsonOf(const OutputState& state, std::chrono::seconds utcOffset) {
  json::object object{{"type", NameOf(state.type)},
                      {"number", state.number},
                      {"name", state.Name()},
                      {"info", state.info},
                      {"status", state.status},
                      {"severity", WordOf(state.severity)},
                      {"problem", state.problem},
                      {"text", state.shown.text},
                      {"pages", Pages(state.shown)},
                      {"published", MomentOrNull(state.published, utcOffset)},
                      {"latencyMs", MillisecondsOrNull(state.latency)},
                      {"onAirMs", MillisecondsOrNull(state.onAir)},
                      {"waiting", state.waiting},
                      {"stale", state.stale},
                      {"staleSince", MomentOrNull(state.staleSince, utcOffset)},
                      {"failingSince", MomentOrNull(state.failingSince, utcOffset)},
                      {"publications", state.publications},
                      {"failures", state.failures}};
  object["progress"] = state.progress ? json::value(*state.progress) : json::value(nullptr);
  return object;
}

json::object JsonOf(const StationState& state, std::chrono::seconds utcOffset) {
  json::array outputs;
  for (const OutputState& output : state.outputs) outputs.push_back(JsonOf(output, utcOffset));
  return {{"number", state.number},
          {"name", state.name},
          {"severity", WordOf(state.Worst())},
          {"updating", state.updating},
          {"source",
           {{"kind", WordOf(state.source.kind)},
            {"state", state.source.healthy ? "ok" : "failing"},
            {"text", state.source.text},
            {"controller", state.source.controller},
            {"connections", state.source.connections}}},
          {"panels",
           {{"information", state.information},
            {"travel", state.travel},
            {"netControl", state.netControl},
            {"bounceControl", state.bounce}}},
          {"current", JsonOf(state.current)},
          {"next", Items(state.next)},
          {"previous", Items(state.previous)},
          {"comingSoon", JsonOf(state.comingSoon)},
          {"presenter", {{"reference", state.presenterReference}, {"name", state.presenterName}}},
          {"show", {{"reference", state.showReference}, {"title", state.showTitle}}},
          {"outputs", std::move(outputs)}};
}

}  // namespace zeb
