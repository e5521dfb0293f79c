#include "templates/TagName.h"

#include <algorithm>

#include "templates/ExtractToDelimiter.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

// Behind three ASCII letters and one character of any kind: where slots begin in a name, and numbers in a
// slot.
std::size_t FifthCharacter(std::string_view text) {
  return SkipCharacters(text, std::min<std::size_t>(3, text.size()), 1);
}

int SlotNumber(std::string_view slot) {
  return std::max(1, LeadingDigits(slot.substr(FifthCharacter(slot))));
}

}  // namespace

TagName SplitTagName(std::string_view name) {
  TagName tag;
  const std::size_t slotStart = FifthCharacter(name);
  const std::string_view fromSlot = name.substr(slotStart);
  if (fromSlot.starts_with("SIM")) {
    tag.slot = fromSlot;
    tag.element = "SIMPLETEXT";
    return tag;
  }
  const Extract slot = ExtractToDelimiter(name, slotStart, '_');
  const Extract element = ExtractToDelimiter(name, slot.Next(), '_');
  tag.slot = slot.text;
  tag.element = element.text;
  tag.rest = name.substr(slot.Next());
  if (element.end != std::string_view::npos)
    tag.index = LeadingInteger(ExtractToDelimiter(name, element.Next(), '_').text);
  return tag;
}

const clsZEBItemInfo* ItemOfSlot(const ServiceSnapshot& snapshot, std::string_view slot) {
  const std::string_view word = slot.substr(0, 3);
  if (word == "NOW") return &snapshot.currentItem;
  if (word == "NEX") return snapshot.NextItem(SlotNumber(slot));
  if (word == "PRE") return snapshot.PreviousItem(SlotNumber(slot));
  if (word == "COM") return &snapshot.comingSoonItem;
  return nullptr;
}

bool AlwaysHasItem(std::string_view slot) {
  const std::string_view word = slot.substr(0, 3);
  return word == "NOW" || word == "COM";
}

}  // namespace zeb
