// Item messages from the input. Whatever they are, they give an item in valid text that survives being
// written and read again.
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "platform/simulated/TestEnvironment.h"
#include "sources/ItemMessage.h"
#include "sources/SilentWindow.h"
#include "text/Parameters.h"
#include "text/Utf8.h"

namespace {

using namespace zeb;

void Require(bool holds) {
  if (!holds) std::abort();
}

struct Station : ServiceEvents {
  Station() { ports.carts.carts[1] = {{"Line 1", "Line 2", "Line 3"}, "StNotes=\"from the cart\""}; }
  TestEnvironment ports;
  clsZEBService service{ports.environment, nullptr, *this};
  SilentWindow window;
  ItemIntake intake{service, window};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Station station;
  const std::string_view message(reinterpret_cast<const char*>(data), size);
  ParameterValue(message, "PicFName");
  clsZEBItemInfo item;
  Require(ParseItemMessage(message, station.intake, station.ports.carts, item));
  for (const std::string* text : {&item->ItemName, &item->Artists, &item->Notes, &item->CartLine1})
    Require(IsValidUtf8(*text));
  Require(std::isfinite(item->ItemStartTime) && item->ItemStartTime >= 0);
  Require(item->ItemType >= 0 && item->ItemStartDate >= 0);

  // A cart would put its own lines and record into the item again.
  if (item->CartNumber == 1 || item->CopyrightMusicDuration < 0 || item->CopyrightTotalDuration < 0) return 0;
  clsZEBItemInfo again;
  const std::string written = WriteItemMessage(item);
  Require(ParseItemMessage(written, station.intake, station.ports.carts, again));
  again.ItemIndexNumber = item.ItemIndexNumber;
  Require(again.IsSame(item, true));
  Require(WriteItemMessage(again) == written);
  return 0;
}
