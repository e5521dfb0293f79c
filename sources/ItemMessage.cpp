#include "sources/ItemMessage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "diagnostics/hxGeneral.h"
#include "sources/MessageIndex.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/HexEscapes.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Parameters.h"

namespace zeb {

namespace {

using Key = MessageKey;
using F = ItemFields;

// Keys whose value goes into a text field as it is.
struct TextKey {
  Key key;
  std::string F::*field;
};
constexpr auto kTextKeys = std::to_array<TextKey>({
    {Key::kIDesc1, &F::CartLine1},
    {Key::kIDesc2, &F::CartLine2},
    {Key::kIDesc3, &F::CartLine3},
    {Key::kIRef, &F::ItemReference},
    {Key::kSchRef, &F::SchedulerReference},
    {Key::kAName1, &F::Artist1Name},
    {Key::kAName2, &F::Artist2Name},
    {Key::kAName3, &F::Artist3Name},
    {Key::kCField1, &F::CustomField1},
    {Key::kCField2, &F::CustomField2},
    {Key::kCField3, &F::CustomField3},
    {Key::kStNotes, &F::Notes},
    {Key::kDNotes, &F::DABNotes},
    {Key::kWNotes, &F::WebNotes},
    {Key::kRNotes, &F::RDSNotes},
    {Key::kOStRef, &F::OnlineStoreReference},
    {Key::kComposer, &F::CopyrightComposer},
    {Key::kCCode, &F::CopyrightCode},
    {Key::kMTitle, &F::CopyrightMusicTitle},
    {Key::kPerformer, &F::CopyrightPerformer},
    {Key::kPTitle, &F::CopyrightProductTitle},
    {Key::kPublisher, &F::CopyrightPublisher},
    {Key::kRecLabel, &F::CopyrightRecordLabel},
    {Key::kRecNo, &F::CopyrightRecordNumber},
});

struct DurationKey {
  Key key;
  float F::*field;
};
constexpr auto kDurationKeys = std::to_array<DurationKey>({
    {Key::kCMDur, &F::CopyrightMusicDuration},
    {Key::kCTDur, &F::CopyrightTotalDuration},
});

constexpr double kSecondsPerDay = 86400;
constexpr double kLastDay = 2958465;     // 31 December 9999; what is later is no date
constexpr double kLongestSeconds = 1e7;  // above any time of day and any length
constexpr double kThousandth = 1000;     // times of day are held to about that much of a second

float Seconds(double seconds) {
  return static_cast<float>(std::clamp(seconds, -kLongestSeconds, kLongestSeconds));
}

// The message, and behind it the record of the cart that it speaks of.
class Values {
 public:
  explicit Values(std::string_view message) : message_(message) {
    if (const auto record = message_.RawValue(Key::kSerialisation)) SetRecord(UndoHexEscapes(*record));
  }
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;

  bool HasRecord() const { return record_.has_value(); }
  void SetRecord(std::string bytes) {
    recordBytes_ = std::move(bytes);
    record_.emplace(recordBytes_);
  }

  std::optional<std::string_view> Raw(Key key) const {
    auto value = message_.RawValue(key);
    if (!value && record_ && key >= Key::kCField1) value = record_->RawValue(key);
    return value;
  }
  std::string Text(Key key) const {
    const auto raw = Raw(key);
    return raw ? DecodeValue(*raw) : std::string();
  }
  double Number(Key key) const { return LeadingNumber(Text(key)); }

  std::optional<std::string_view> RawPicture(int number) const {
    auto value = message_.RawPicture(number);
    if (!value && record_) value = record_->RawPicture(number);
    return value;
  }

 private:
  MessageIndex message_;
  std::string recordBytes_;
  std::optional<MessageIndex> record_;
};

void Promote(std::string_view from, ItemIntake& intake, clsZEBItemInfo& item) {
  clsZEBService& service = intake.service();
  clsZEBItemInfo empty;
  if (EqualIgnoringAsciiCase(from, "NEXT")) {
    item = service.NextItem(1)->Copy();
    empty.ItemIndexNumber = 1;
    intake.SetNextItem(&empty, false);
  } else if (EqualIgnoringAsciiCase(from, "COMING")) {
    item = service.ComingSoonItem().Copy();
    intake.SetComingSoonItem(&empty, false);
  } else if (EqualIgnoringAsciiCase(from, "CURRENT")) {
    item = service.CurrentItem().Copy();
    intake.SetCurrentItem(&empty, false);
  } else {
    return;
  }
  // The emptied slot is news even when the item itself then turns out to be the same as before.
  intake.window().InformationReceived();
}

void ReadStart(const Values& values, ItemFields& fields) {
  if (values.Raw(Key::kIDt)) {
    const double moment = values.Number(Key::kIDt);
    if (moment > 0 && moment < kLastDay) {
      const double thousandths = std::round(moment * kSecondsPerDay * kThousandth);
      const double day = std::floor(thousandths / (kSecondsPerDay * kThousandth));
      fields.ItemStartDate = static_cast<std::int32_t>(day);
      fields.ItemStartTime = Seconds(thousandths / kThousandth - day * kSecondsPerDay);
    }
  }
  if (values.Raw(Key::kEstStTm)) {
    const double seconds = values.Number(Key::kEstStTm);
    if (seconds > 0) fields.ItemStartTime = Seconds(seconds);
  }
}

// The cart's lines as the service says; a line number that is none leaves the field alone.
void ApplyCartLines(const Cart& cart, const ServiceSettings& settings, ItemFields& fields) {
  const auto apply = [&](std::int32_t line, std::string& field) {
    if (line >= 1 && line <= 3) field = cart.lines[static_cast<std::size_t>(line) - 1];
  };
  apply(settings.CartItemNameLine, fields.ItemName);
  apply(settings.CartArtist1Line, fields.Artist1Name);
  apply(settings.CartArtist2Line, fields.Artist2Name);
}

bool ReadCart(Values& values, ItemIntake& intake, CartStore& carts, ItemFields& fields) {
  const std::int32_t number = LeadingInteger(values.Text(Key::kHDRef));
  if (number <= 0) return false;
  fields.CartNumber = number;
  const std::optional<Cart> cart = carts.Find(number);
  if (!cart) return false;
  ApplyCartLines(*cart, intake.service().settings, fields);
  if (!values.HasRecord() && !cart->serialisation.empty()) values.SetRecord(cart->serialisation);
  return true;
}

bool ReadTitle(const Values& values, ItemFields& fields) {
  std::string title = values.Text(Key::kITitle);
  if (title.empty()) return false;
  fields.ItemName = std::move(title);
  fields.Artist1Name.clear();
  fields.Artist2Name.clear();
  fields.Artist3Name.clear();
  return true;
}

void ReadPictures(const Values& values, ItemIntake& intake, clsZEBItemInfo& item) {
  std::vector<std::string_view> names;
  if (const auto name = values.Raw(Key::kPicFName)) names.push_back(*name);
  if (const auto name = values.RawPicture(1)) names.push_back(*name);
  for (int number = 2; number <= kMaxPictures; ++number) {
    const auto name = values.RawPicture(number);
    if (!name) break;
    names.push_back(*name);
  }
  if (names.empty()) return;
  item.ClearPictures();
  for (const std::string_view name : names) {
    if (name.empty()) continue;
    const bool room = item.NumberPictures() < static_cast<int>(kMaxItemFiles);
    if (std::string picture = DecodeValue(name); picture.size() > kMaxFileNameBytes)
      intake.NoteExcess("the name of a picture has " + std::to_string(picture.size()) +
                        " bytes and is left out; at most " + std::to_string(kMaxFileNameBytes) + " are read");
    else if (!item.AddPictureFile(std::move(picture)) && !room)
      return intake.NoteExcess("an item has more than " + std::to_string(kMaxItemFiles) +
                               " pictures; the others are left out");
  }
}

void ReadFields(Values& values, ItemIntake& intake, CartStore& carts, clsZEBItemInfo& item) {
  ItemFields& fields = item.Edit();
  fields.ItemType = std::max(0, LeadingInteger(values.Text(Key::kIType)));
  ReadStart(values, fields);
  bool artistsChanged = ReadCart(values, intake, carts, fields);
  artistsChanged |= ReadTitle(values, fields);
  for (const TextKey& text : kTextKeys)
    if (const auto raw = values.Raw(text.key)) fields.*text.field = DecodeValue(*raw);
  for (const DurationKey& duration : kDurationKeys)
    if (values.Raw(duration.key)) fields.*duration.field = Seconds(values.Number(duration.key));
  artistsChanged |= values.Raw(Key::kAName1) || values.Raw(Key::kAName2) || values.Raw(Key::kAName3);
  // A promoted copy whose artists were taken away must not go on showing them.
  if (artistsChanged) fields.Artists.clear();
  if (!fields.Artist1Name.empty() || !fields.Artist2Name.empty() || !fields.Artist3Name.empty()) {
    std::string joined = JoinArtistNames(item);
    item.Edit().Artists = std::move(joined);
  }
}

class MessageWriter {
 public:
  void Text(std::string_view key, std::string_view value) {
    if (!value.empty()) AppendQuoted(key, value);
  }
  void Number(std::string_view key, std::int32_t value) {
    if (value > 0) Append(key).append(PlainNumber(std::int64_t{value}));
  }
  void Seconds(std::string_view key, float value) {
    if (value > 0) Append(key).append(PlainNumber(value));
  }
  void Picture(int number, std::string_view name) {
    AppendQuoted(number == 1 ? "PicFName" : std::to_string(number) + "PicFName", name);
  }
  std::string Take() { return std::move(message_); }

 private:
  std::string& Append(std::string_view key) {
    if (!message_.empty()) message_ += ' ';
    return message_.append(key).append("=");
  }
  void AppendQuoted(std::string_view key, std::string_view value) {
    std::string& message = Append(key).append("\"");
    for (const char c : EscapeValue(value)) {
      // Keys are found inside quotes too, so a value must hold nothing that looks like one.
      if (c == '=')
        message += "{3D}";
      else
        message += c;
    }
    message += '"';
  }
  std::string message_;
};

}  // namespace

bool ParseItemMessage(std::string_view message, ItemIntake& intake, CartStore& carts, clsZEBItemInfo& item) {
  try {
    Values values(message);
    if (const auto from = values.Raw(Key::kPromote)) Promote(DecodeValue(*from), intake, item);
    ReadFields(values, intake, carts, item);
    ReadPictures(values, intake, item);
    return true;
  } catch (const std::exception&) {
    ReportException("reading an item message", Report::kQuietly);
    return false;
  }
}

std::string WriteItemMessage(const clsZEBItemInfo& item) {
  const ItemFields& fields = item.Fields();
  MessageWriter writer;
  writer.Number("IType", fields.ItemType);
  writer.Number("IDt", fields.ItemStartDate);
  writer.Seconds("EstStTm", fields.ItemStartTime);
  writer.Number("HDRef", fields.CartNumber);
  writer.Text("ITitle", fields.ItemName);
  const bool named =
      !fields.Artist1Name.empty() || !fields.Artist2Name.empty() || !fields.Artist3Name.empty();
  if (!named) writer.Text("AName1", fields.Artists);
  for (const TextKey& text : kTextKeys) writer.Text(MessageKeyName(text.key), fields.*text.field);
  for (const DurationKey& duration : kDurationKeys)
    writer.Seconds(MessageKeyName(duration.key), fields.*duration.field);
  for (int i = 1; i <= item.NumberPictures(); ++i) writer.Picture(i, item.PictureFileName(i));
  return writer.Take();
}

}  // namespace zeb
