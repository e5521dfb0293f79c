#include "history/HistoryRecord.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "text/Encodings.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

using F = ItemFields;

// The numbers are part of the files that stations have: they stay what they are, and are not used again.
struct TextField {
  unsigned number;
  std::string F::*field;
};
constexpr auto kTexts = std::to_array<TextField>({
    {1, &F::ItemName},
    {2, &F::Artists},
    {3, &F::Artist1Name},
    {4, &F::Artist2Name},
    {5, &F::Artist3Name},
    {6, &F::CartLine1},
    {7, &F::CartLine2},
    {8, &F::CartLine3},
    {9, &F::CartArtistsHREF},
    {10, &F::ItemHREF},
    {11, &F::TitleID},
    {12, &F::AlbumName},
    {13, &F::ItemReference},
    {14, &F::SchedulerReference},
    {15, &F::ItemCode},
    {16, &F::Artist1HREF},
    {17, &F::Artist2HREF},
    {18, &F::Artist3HREF},
    {19, &F::CustomField1},
    {20, &F::CustomField2},
    {21, &F::CustomField3},
    {22, &F::OnlineStoreReference},
    {23, &F::PictureHREF},
    {24, &F::CopyrightProductTitle},
    {25, &F::CopyrightMusicTitle},
    {26, &F::CopyrightRecordLabel},
    {27, &F::CopyrightRecordNumber},
    {28, &F::CopyrightComposer},
    {29, &F::CopyrightPerformer},
    {30, &F::CopyrightPublisher},
    {31, &F::CopyrightCode},
    {32, &F::Notes},
    {33, &F::WebNotes},
    {34, &F::RDSNotes},
    {35, &F::DABNotes},
});

struct WholeField {
  unsigned number;
  std::int32_t F::*field;
};
constexpr auto kWholes = std::to_array<WholeField>({
    {40, &F::CartNumber},
    {41, &F::ItemStartDate},
    {42, &F::ItemType},
});

struct SecondsField {
  unsigned number;
  float F::*field;
};
constexpr auto kSeconds = std::to_array<SecondsField>({
    {50, &F::CartItemLength},
    {51, &F::ItemStartTime},
    {52, &F::CopyrightTotalDuration},
    {53, &F::CopyrightMusicDuration},
});
// A field that is missing above does not compile.
static_assert(sizeof(F) <=
              kTexts.size() * sizeof(std::string) + (kWholes.size() + kSeconds.size() + 1) * sizeof(float));

constexpr unsigned kNextSlots = 8, kPreviousSlots = 9;  // behind the words: how many there are
constexpr std::size_t kMostSlots = 1000;
constexpr unsigned kPicture = 60, kAdditionalFile = 61;
constexpr int kUrlEncoded = 4;
constexpr char kForm = 1;  // the first byte

struct WordsField {
  unsigned number;
  std::string ServiceSnapshot::*field;
};
constexpr auto kWords = std::to_array<WordsField>({
    {1, &ServiceSnapshot::ServiceName},
    {2, &ServiceSnapshot::NoPictureFileName},
    {3, &ServiceSnapshot::LoggingPath},
    {4, &ServiceSnapshot::PresenterReference},
    {5, &ServiceSnapshot::PresenterFullName},
    {6, &ServiceSnapshot::ShowReference},
    {7, &ServiceSnapshot::ShowTitle},
});

// Each field: its number, the length of its value, the value.
class Writer {
 public:
  void Text(unsigned number, std::string_view value) {
    if (!value.empty()) Field(number, HistoryText(value, kMaxHistoryText));
  }
  // All or nothing: half a file's name is another file's.
  void FileName(unsigned number, const std::string& value) {
    if (value.size() <= kMaxHistoryText && bytes_.size() + value.size() + kFieldStart <= kMaxHistoryRecord)
      Field(number, value);
  }
  void Whole(unsigned number, std::uint32_t value) {
    if (value == 0) return;
    std::string bytes;
    for (; value != 0; value >>= 8) bytes += static_cast<char>(value & 0xFFu);
    Field(number, bytes);
  }
  std::string Take() { return std::move(bytes_); }

 private:
  static constexpr std::size_t kFieldStart = 8;  // bytes, at most

  void Field(unsigned number, std::string_view value) {
    if (bytes_.empty()) bytes_ += kForm;
    const std::size_t room = kMaxHistoryRecord - std::min(kMaxHistoryRecord, bytes_.size() + kFieldStart);
    const std::string cut = value.size() > room ? HistoryText(value, room) : std::string();
    if (value.size() > room) value = cut;
    bytes_ += static_cast<char>(number);
    std::size_t size = value.size();
    for (; size >= 0x80; size >>= 7) bytes_ += static_cast<char>((size & 0x7Fu) | 0x80u);
    bytes_ += static_cast<char>(size);
    bytes_ += value;
  }
  std::string bytes_;
};

class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {
    good_ = rest_.empty() || rest_.front() == kForm;
    if (!rest_.empty()) rest_.remove_prefix(1);
  }
  // False at the end, and when the bytes are no record.
  bool Next(unsigned& number, std::string_view& value) {
    if (!good_ || rest_.empty()) return false;
    number = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    const std::optional<std::size_t> size = Size();
    good_ = size && *size <= rest_.size();
    if (!good_) return false;
    value = rest_.substr(0, *size);
    rest_.remove_prefix(*size);
    return true;
  }
  bool Good() const { return good_; }

 private:
  std::optional<std::size_t> Size() {
    std::size_t size = 0;
    for (unsigned shift = 0; !rest_.empty() && shift < 32; shift += 7) {
      const auto byte = static_cast<unsigned char>(rest_.front());
      rest_.remove_prefix(1);
      size |= static_cast<std::size_t>(byte & 0x7Fu) << shift;
      if (byte < 0x80) return size;
    }
    return std::nullopt;
  }
  std::string_view rest_;
  bool good_;
};

std::uint32_t WholeOf(std::string_view value) {
  std::uint32_t number = 0;
  for (std::size_t i = value.size(); i > 0; --i)
    number = (number << 8) | static_cast<unsigned char>(value[i - 1]);
  return number;
}

void TakeField(clsZEBItemInfo& item, unsigned number, std::string_view value) {
  if (number == kPicture) {
    item.AddPictureFile(std::string(value));
    return;
  }
  if (number == kAdditionalFile) {
    item.AddAdditionalFile(std::string(value));
    return;
  }
  F& fields = item.Edit();
  for (const TextField& text : kTexts)
    if (text.number == number) fields.*text.field = value;
  for (const WholeField& whole : kWholes)
    if (whole.number == number) fields.*whole.field = static_cast<std::int32_t>(WholeOf(value));
  for (const SecondsField& seconds : kSeconds)
    if (seconds.number == number) fields.*seconds.field = std::bit_cast<float>(WholeOf(value));
}

}  // namespace

std::string HistoryText(std::string_view text, std::size_t most) {
  const auto continues = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u; };
  std::size_t end = std::min(text.size(), most);
  if (end < text.size())
    while (end > 0 && continues(text[end])) --end;
  const std::string_view kept = text.substr(0, end);
  if (IsValidUtf8(kept)) return std::string(kept);
  const std::string decoded = DecodeLenient(kept);
  return decoded.size() > most ? HistoryText(decoded, most) : decoded;
}

// These numbers stay what they are, too.
int EncodingNumber(ValueEscape escape, bool urlEncode) {
  int number = 0;
  switch (escape) {
    case ValueEscape::kNone:
      break;
    case ValueEscape::kHtml:
      number = 1;
      break;
    case ValueEscape::kXml:
      number = 2;
      break;
    case ValueEscape::kJson:
      number = 3;
      break;
  }
  return number + (urlEncode ? kUrlEncoded : 0);
}

ValueEncoding EncodingOf(int number) {
  constexpr ValueEscape kEscapes[] = {ValueEscape::kNone, ValueEscape::kHtml, ValueEscape::kXml,
                                      ValueEscape::kJson};
  return {.urlEncode = (number & kUrlEncoded) != 0, .escape = kEscapes[number & 3]};
}

std::string WriteItemRecord(const clsZEBItemInfo& item) {
  const F& fields = item.Fields();
  Writer writer;
  for (const WholeField& whole : kWholes)
    writer.Whole(whole.number, static_cast<std::uint32_t>(fields.*whole.field));
  for (const SecondsField& seconds : kSeconds)
    writer.Whole(seconds.number, std::bit_cast<std::uint32_t>(fields.*seconds.field));
  for (const TextField& text : kTexts) writer.Text(text.number, fields.*text.field);
  for (int i = 1; i <= item.NumberPictures(); ++i) writer.FileName(kPicture, item.PictureFileName(i));
  for (int i = 1; i <= item.NumberAdditionalFiles(); ++i)
    writer.FileName(kAdditionalFile, item.AdditionalFile(i));
  return writer.Take();
}

std::optional<clsZEBItemInfo> ReadItemRecord(std::string_view bytes) {
  clsZEBItemInfo item;
  Reader reader(bytes);
  unsigned number = 0;
  std::string_view value;
  while (reader.Next(number, value)) TakeField(item, number, value);
  if (!reader.Good()) return std::nullopt;
  return item;
}

std::string WriteWordsRecord(const ServiceSnapshot& snapshot) {
  Writer writer;
  for (const WordsField& words : kWords) writer.Text(words.number, snapshot.*words.field);
  writer.Whole(kNextSlots, static_cast<std::uint32_t>(snapshot.nextItems.size()));
  writer.Whole(kPreviousSlots, static_cast<std::uint32_t>(snapshot.previousItems.size()));
  return writer.Take();
}

bool ReadWordsRecord(std::string_view bytes, ServiceSnapshot& snapshot) {
  Reader reader(bytes);
  unsigned number = 0;
  std::string_view value;
  while (reader.Next(number, value)) {
    for (const WordsField& words : kWords)
      if (words.number == number) snapshot.*words.field = value;
    const auto slots = [value] { return std::min<std::size_t>(WholeOf(value), kMostSlots); };
    if (number == kNextSlots) snapshot.nextItems.resize(slots());
    if (number == kPreviousSlots) snapshot.previousItems.resize(slots());
  }
  return reader.Good();
}

}  // namespace zeb
