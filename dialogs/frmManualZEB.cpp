#include "dialogs/frmManualZEB.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "sources/ItemMessage.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/HexEscapes.h"
#include "text/Numbers.h"
#include "text/Parameters.h"

namespace zeb {

namespace {

constexpr std::array<std::string_view, 6> kMessageStarts = {"SET_CURRENT_ITEM ",
                                                            "SET_NEXT_ITEM ",
                                                            "SET_PREVIOUS_ITEM ",
                                                            "SET_COMINGSOON_ITEM ",
                                                            "SET_CURRENT_ITEM Promote=NEXT",
                                                            "SET_CURRENT_ITEM Promote=COMING"};

// In quotes. A "=" is escaped too, since keys are found inside quotes as well.
std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : EscapeValue(text)) {
    if (c == '=')
      quoted += "{3D}";
    else
      quoted += c;
  }
  return quoted += '"';
}

std::string TwoPairs(std::string_view command, std::string_view firstKey, std::string_view first,
                     std::string_view secondKey, std::string_view second) {
  std::string message(command);
  message.append("  ").append(firstKey).append("=").append(Quoted(first));
  message.append(" ").append(secondKey).append("=").append(Quoted(second));
  return message;
}

// "" for a line number that is none, as when a message names the cart.
std::string CartLine(const Cart& cart, std::int32_t number) {
  return number >= 1 && number <= 3 ? cart.lines[static_cast<std::size_t>(number) - 1] : std::string();
}

// 0 unless all of the text is a number above 0.
std::int32_t ReadCartNumber(std::string_view text) {
  text = TrimBlanks(text);
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::max(number, 0) : 0;
}

constexpr std::pair<std::string_view, std::int32_t> kTypeWords[] = {
    {"song", kItemTypeSong}, {"link", kItemTypeJingle}, {"spot", kItemTypeAdvert}, {"other", kItemTypeCart}};

}  // namespace

std::optional<std::int32_t> ManualItemType(std::string_view text) {
  for (const auto& [word, type] : kTypeWords)
    if (text == word) return type;
  const auto type = WholeNumber<std::int32_t>(text);
  return type.value_or(-1) >= 0 ? type : std::nullopt;
}

ManualEntry OpenManualEntry(const clsZEBService& service) {
  ManualEntry entry;
  entry.presenterFullName = service.GetSpecialElementByName("PRESENTERFULLNAME");
  entry.presenterReference = service.GetSpecialElementByName("PRESENTERREFERENCE");
  entry.showReference = service.GetSpecialElementByName("SHOWREFERENCE");
  entry.showTitle = service.GetSpecialElementByName("SHOWTITLE");
  return entry;
}

bool CopyCart(ManualEntry& entry, CartStore& carts, const ServiceSettings& settings) {
  const std::int32_t number = ReadCartNumber(entry.cartNumber);
  if (number <= 0) return false;
  const auto cart = carts.Find(number);
  if (!cart) return false;
  // There is one field for the artists, and a typed title takes away those of the cart itself.
  clsZEBItemInfo artists;
  artists.Edit().Artist1Name = CartLine(*cart, settings.CartArtist1Line);
  artists.Edit().Artist2Name = CartLine(*cart, settings.CartArtist2Line);
  const auto copy = [](std::string value, std::string& field) {
    if (!value.empty()) field = std::move(value);
  };
  copy(CartLine(*cart, settings.CartItemNameLine), entry.itemName);
  copy(JoinArtistNames(artists), entry.artist);
  copy(ParameterValue(cart->serialisation, "StNotes"), entry.notes);
  return true;
}

std::string ManualItemMessage(const ManualEntry& entry) {
  clsZEBItemInfo item;
  ItemFields& fields = item.Edit();
  fields.ItemType = entry.itemType;
  fields.ItemName = TrimBlanks(entry.itemName);
  fields.Artist1Name = entry.artist;
  fields.CartNumber = ReadCartNumber(entry.cartNumber);
  fields.Notes = entry.notes;
  std::string message(kMessageStarts[static_cast<std::size_t>(entry.slot)]);
  return message.append(" ").append(WriteItemMessage(item));
}

std::string ManualPresenterMessage(std::string_view reference, std::string_view fullName) {
  return TwoPairs("SET_PRESENTER", "Presenter", reference, "Fullname", fullName);
}

std::string ManualShowMessage(std::string_view reference, std::string_view title) {
  return TwoPairs("SET_SHOW", "Show", reference, "Title", title);
}

std::vector<std::string> ManualMessages(const ManualEntry& entry) {
  std::vector<std::string> messages = {ManualItemMessage(entry)};
  if (!entry.presenterReference.empty())
    messages.push_back(ManualPresenterMessage(entry.presenterReference, entry.presenterFullName));
  if (!entry.showReference.empty())
    messages.push_back(ManualShowMessage(entry.showReference, entry.showTitle));
  return messages;
}

}  // namespace zeb
