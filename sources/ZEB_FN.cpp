#include "sources/ZEB_FN.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "core/ItemType.h"
#include "core/clsZEBService.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

std::string Decoded(std::string_view bytes) {
  return DecodeFile(bytes, DetectFileEncoding(bytes));
}

void JoinArtists(clsZEBItemInfo& item) {
  std::string joined = JoinArtistNames(item);
  item.Edit().Artists = std::move(joined);
}

// "YYYY-MM-DDThh:mm:ss", with a fraction or zone behind it or not; anything else leaves the item alone.
void ApplyStart(std::string_view text, ItemFields& fields) {
  text = TrimBlanks(text);
  if (text.size() < 19 || text[4] != '-' || text[7] != '-' || text[10] != 'T') return;
  for (const std::size_t digit : {0u, 1u, 2u, 3u, 5u, 6u, 8u, 9u})
    if (text[digit] < '0' || text[digit] > '9') return;
  const std::chrono::year_month_day day{
      std::chrono::year(LeadingDigits(text)),
      std::chrono::month(static_cast<unsigned>(LeadingDigits(text.substr(5)))),
      std::chrono::day(static_cast<unsigned>(LeadingDigits(text.substr(8))))};
  if (!day.ok()) return;
  fields.ItemStartDate = std::max(0, DayNumber(WallTime(std::chrono::local_days(day))));
  fields.ItemStartTime = SecondsFromTimeText(text.substr(11, 8));
}

clsZEBItemInfo BroadcastItem(const MarkupDocument& document, std::size_t element) {
  static constexpr std::pair<const char*, std::string ItemFields::*> kTexts[] = {
      {"titleId", &ItemFields::TitleID},        {"itemReference", &ItemFields::ItemReference},
      {"itemCode", &ItemFields::ItemCode},      {"titleName", &ItemFields::ItemName},
      {"artistName", &ItemFields::Artist1Name}, {"albumName", &ItemFields::AlbumName}};
  clsZEBItemInfo item;
  ItemFields& fields = item.Edit();
  fields.ItemType = kItemTypeSong;
  // The children of one element are looked at once, so that a document of many items takes linear time.
  std::vector<std::string_view> taken;
  for (std::size_t i = element + 1; i < document.elements.size(); ++i) {
    const MarkupDocument::Element& child = document.elements[i];
    if (child.parent == MarkupDocument::kNone || child.parent < element) break;
    if (child.parent != element || std::find(taken.begin(), taken.end(), child.name) != taken.end()) continue;
    const auto text = std::find_if(std::begin(kTexts), std::end(kTexts),
                                   [&](const auto& known) { return child.name == known.first; });
    if (text != std::end(kTexts))
      fields.*text->second = document.TextOf(i);
    else if (child.name == "startTime")
      ApplyStart(document.TextOf(i), fields);
    else
      continue;
    taken.push_back(child.name);
  }
  JoinArtists(item);
  return item;
}

void AddNext(SourceItems& source, clsZEBItemInfo item) {
  if (source.items.size() > static_cast<std::size_t>(kMaxNextItems)) {
    ++source.dropped;
    return;
  }
  item.ItemIndexNumber = static_cast<std::int16_t>(source.items.size());
  source.items.emplace_back(std::move(item));
}

// A link goes by the jingle's code, as playout systems send it.
std::int32_t TypeOf(const std::string& word) {
  if (word == "song") return kItemTypeSong;
  if (word == "link") return kItemTypeJingle;
  return word == "spot" ? kItemTypeAdvert : kItemTypeCart;
}

// "3:45" → "00003:45".
std::string PaddedTime(std::string_view text) {
  text = TrimBlanks(text);
  return std::string(text.size() < 8 ? 8 - text.size() : 0, '0') + std::string(text);
}

}  // namespace

Result<SourceItems> ReadDallet50(std::string_view bytes, std::int32_t today) {
  clsZEBItemInfo item;
  ItemFields& fields = item.Edit();
  fields.ItemType = kItemTypeSong;
  const std::string text = Decoded(bytes);
  ForEachLine(text, [&](std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return;
    const std::string_view key = TrimBlanks(line.substr(0, equals));
    const std::string_view value = line.substr(equals + 1);
    if (EqualIgnoringAsciiCase(key, "TITLE")) {
      fields.ItemName = value;
    } else if (EqualIgnoringAsciiCase(key, "ARTI") || EqualIgnoringAsciiCase(key, "ARTIST")) {
      fields.Artist1Name = value;
    } else if (EqualIgnoringAsciiCase(key, "ECH")) {
      fields.ItemStartDate = today;
      fields.ItemStartTime = SecondsFromTimeText(value);
    }
  });
  JoinArtists(item);
  SourceItems source;
  source.items.emplace_back(std::move(item));
  return source;
}

Result<SourceItems> ReadDallet51(std::string_view bytes, Markup& markup) {
  const Result<MarkupDocument> document = markup.ReadXml(Decoded(bytes));
  if (!document) return document.AsFailure();
  if (document.Value().Select("/BroadcastMonitor").empty())
    return Failure{"its root is not BroadcastMonitor"};
  SourceItems source;
  source.items.emplace_back();
  if (const auto current = document.Value().Select("/BroadcastMonitor/Current"); !current.empty())
    source.items[0] = BroadcastItem(document.Value(), current[0]);
  for (const std::size_t next : document.Value().Select("/BroadcastMonitor/Next"))
    AddNext(source, BroadcastItem(document.Value(), next));
  return source;
}

Result<GenericFields> ReadGenericFields(std::string_view iniBytes, Markup* markup) {
  const IniFile file = IniFile::FromBytes(iniBytes);
  const auto read = [&](const char* key) -> std::optional<cTextField> {
    cTextField field(markup);
    field.ReadFromConfig(file, "ZEBSource", key);
    return field.HasSettings() ? std::optional(std::move(field)) : std::nullopt;
  };
  GenericFields fields{read("ItemTitle"),  read("ItemArtist"),      read("ItemType"),
                       read("ItemStatus"), read("ItemHDReference"), read("ItemLength")};
  if (!fields.title && !fields.artist && !fields.type && !fields.status && !fields.cart && !fields.length)
    return Failure{"its section ZEBSource defines no field"};
  return fields;
}

Result<SourceItems> ReadGenericText(std::string_view bytes, GenericFields given) {
  SourceItems source;
  source.items.emplace_back();
  const auto take = [&](std::string_view line) {
    clsZEBItemInfo item;
    ItemFields& fields = item.Edit();
    const auto value = [line](std::optional<cTextField>& field) {
      return field ? field->GetField(line) : std::string();
    };
    fields.ItemName = value(given.title);
    fields.Artist1Name = value(given.artist);
    if (given.type) fields.ItemType = TypeOf(LowerCase(TrimBlanks(value(given.type))));
    if (given.cart) fields.CartNumber = LeadingInteger(value(given.cart));
    if (given.length) fields.CartItemLength = SecondsFromTimeText(PaddedTime(value(given.length)));
    JoinArtists(item);
    if (EqualIgnoringAsciiCase(TrimBlanks(value(given.status)), "C"))
      source.items[0] = std::move(item);
    else
      AddNext(source, std::move(item));
  };
  const std::string text = Decoded(bytes);
  ForEachLine(text.empty() ? " " : text, take);
  return source;
}

}  // namespace zeb
