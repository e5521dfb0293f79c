#include "app/SetCommand.h"

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "text/Encodings.h"

namespace zeb {

namespace {

const char* PathOf(const SetOptions& options) {
  if (options.what == SetOptions::What::kPresenter) return "presenter";
  if (options.what == SetOptions::What::kShow) return "show";
  switch (options.entry.slot) {
    case ManualSlot::kCurrent:
      return "items/current";
    case ManualSlot::kNext:
      return "items/next";
    case ManualSlot::kPrevious:
      return "items/previous";
    case ManualSlot::kComingSoon:
      return "items/coming";
    default:
      return "promote";
  }
}

// What a shell gives may be in any character set.
boost::json::string Text(const std::string& given) {
  return boost::json::string(DecodeLenient(given));
}

boost::json::object BodyOf(const SetOptions& options) {
  const ManualEntry& entry = options.entry;
  if (options.what == SetOptions::What::kPresenter)
    return {{"reference", Text(entry.presenterReference)}, {"name", Text(entry.presenterFullName)}};
  if (options.what == SetOptions::What::kShow)
    return {{"reference", Text(entry.showReference)}, {"title", Text(entry.showTitle)}};
  boost::json::object body{{"title", Text(entry.itemName)},
                           {"artist", Text(entry.artist)},
                           {"type", entry.itemType},
                           {"cart", Text(entry.cartNumber)},
                           {"notes", Text(entry.notes)}};
  if (entry.slot == ManualSlot::kPromoteNext) body["from"] = "next";
  if (entry.slot == ManualSlot::kPromoteComing) body["from"] = "coming";
  return body;
}

}  // namespace

SetRequest SetRequestOf(const SetOptions& options, int number) {
  return {"/api/v1/services/" + std::to_string(number) + "/" + PathOf(options),
          boost::json::serialize(BodyOf(options))};
}

std::string SetMessage(const SetOptions& options) {
  const ManualEntry& entry = options.entry;
  switch (options.what) {
    case SetOptions::What::kPresenter:
      return ManualPresenterMessage(entry.presenterReference, entry.presenterFullName);
    case SetOptions::What::kShow:
      return ManualShowMessage(entry.showReference, entry.showTitle);
    case SetOptions::What::kItem:
      break;
  }
  return ManualItemMessage(entry);
}

}  // namespace zeb
