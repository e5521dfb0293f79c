#include "sources/MessageIndex.h"

#include <algorithm>
#include <cstring>

#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Parameters.h"

namespace zeb {

namespace {

constexpr std::array<std::string_view, kNumberMessageKeys> kNames = {
    "Promote",   "IType",    "IDt",     "EstStTm",   "HDRef",
    "ITitle",    "IDesc1",   "IDesc2",  "IDesc3",    "IRef",
    "SchRef",    "AName1",   "AName2",  "AName3",    "HDItem.Serialisation",
    "CField1",   "CField2",  "CField3", "StNotes",   "DNotes",
    "WNotes",    "RNotes",   "OStRef",  "Composer",  "CCode",
    "CMDur",     "CTDur",    "MTitle",  "Performer", "PTitle",
    "Publisher", "RecLabel", "RecNo",   "PicFName"};
constexpr std::string_view kPictureName = "PicFName";
constexpr std::size_t kLongestKey = 20;

constexpr std::size_t HashStep(std::size_t hash, char c) {
  // Setting this bit makes letters small and leaves digits and dots alone.
  return hash * 33 + (static_cast<unsigned char>(c) | 0x20u);
}

// Open addressing, made by the compiler; less than a seventh full.
constexpr std::size_t kSlots = 256;
constexpr std::uint8_t kFree = 0xFF;

constexpr std::size_t SlotOf(std::size_t hash) {
  return (hash ^ (hash >> 8)) % kSlots;
}

constexpr std::array<std::uint8_t, kSlots> MakeSlots() {
  std::array<std::uint8_t, kSlots> slots{};
  for (std::uint8_t& slot : slots) slot = kFree;
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    std::size_t hash = 0;
    for (const char c : kNames[i]) hash = HashStep(hash, c);
    std::size_t slot = SlotOf(hash);
    while (slots[slot] != kFree) slot = (slot + 1) % kSlots;
    slots[slot] = static_cast<std::uint8_t>(i);
  }
  return slots;
}
constexpr std::array<std::uint8_t, kSlots> kKeySlots = MakeSlots();

constexpr bool SameKey(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  return true;
}

}  // namespace

std::string_view MessageKeyName(MessageKey key) {
  return kNames[static_cast<std::size_t>(key)];
}

MessageIndex::MessageIndex(std::string_view message) : message_(message) {
  starts_.fill(kAbsent);
  // A key begins the message or follows a blank, wherever that blank stands.
  const char* const begin = message.data();
  const char* const end = begin + message.size();
  for (const char* word = begin; word < end;) {
    const char* at = word;
    const char* const limit =
        end - word > static_cast<std::ptrdiff_t>(kLongestKey) ? word + kLongestKey + 1 : end;
    std::size_t hash = 0;
    for (; at < limit && *at != ' '; ++at) {
      if (*at == '=') {
        NoteKey({word, static_cast<std::size_t>(at - word)}, hash, static_cast<std::size_t>(at + 1 - begin));
        break;
      }
      hash = HashStep(hash, *at);
    }
    const void* const blank = at < end ? std::memchr(at, ' ', static_cast<std::size_t>(end - at)) : nullptr;
    if (!blank) break;
    word = static_cast<const char*>(blank) + 1;
  }
}

void MessageIndex::NoteKey(std::string_view key, std::size_t hash, std::size_t valueStart) {
  if (key.empty()) return;
  if (key.front() >= '1' && key.front() <= '9') {
    NotePicture(key, valueStart);
    return;
  }
  for (std::size_t slot = SlotOf(hash); kKeySlots[slot] != kFree; slot = (slot + 1) % kSlots) {
    const std::size_t found = kKeySlots[slot];
    if (!SameKey(kNames[found], key)) continue;
    if (starts_[found] == kAbsent) starts_[found] = valueStart;  // the first one counts
    return;
  }
}

void MessageIndex::NotePicture(std::string_view key, std::size_t valueStart) {
  if (key.size() <= kPictureName.size()) return;
  const std::string_view digits = key.substr(0, key.size() - kPictureName.size());
  if (!SameKey(key.substr(digits.size()), kPictureName) || digits.size() > 3 ||
      !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }))
    return;
  const auto number = static_cast<std::size_t>(LeadingDigits(digits));
  if (number > static_cast<std::size_t>(kMaxPictures)) return;
  if (pictureStarts_.size() <= number) pictureStarts_.resize(number + 1, kAbsent);
  if (pictureStarts_[number] == kAbsent) pictureStarts_[number] = valueStart;
}

std::optional<std::string_view> MessageIndex::RawValue(MessageKey key) const {
  const std::size_t start = starts_[static_cast<std::size_t>(key)];
  if (start == kAbsent) return std::nullopt;
  return RawValueAt(message_, start);
}

std::optional<std::string_view> MessageIndex::RawPicture(int number) const {
  const auto at = static_cast<std::size_t>(number);
  if (at >= pictureStarts_.size() || pictureStarts_[at] == kAbsent) return std::nullopt;
  return RawValueAt(message_, pictureStarts_[at]);
}

}  // namespace zeb
