#include "templates/SectionCondition.h"

#include <string>

#include "core/ItemType.h"
#include "templates/ExtractToDelimiter.h"
#include "templates/TagName.h"
#include "text/LetterCase.h"

namespace zeb {

namespace {

// The words for voice links test the jingle's code on purpose: playout systems send links with that code.
std::int32_t ItemTypeOfWord(std::string_view word) {
  static constexpr struct {
    std::string_view word;
    std::int32_t code;
  } kWords[] = {
      {"SONG", kItemTypeSong},          {"TRACK", kItemTypeSong},     {"PELMORA", kItemTypeSong},
      {"ADVERT", kItemTypeAdvert},      {"AD", kItemTypeAdvert},      {"SPOTSET", kItemTypeAdvert},
      {"JINGLE", kItemTypeJingle},      {"RCART", kItemTypeJingle},   {"ID", kItemTypeJingle},
      {"CART", kItemTypeCart},          {"VOICE", kItemTypeJingle},   {"VOICELINK", kItemTypeJingle},
      {"VOICECUSTOM", kItemTypeJingle}, {"VCUSTOM", kItemTypeJingle}, {"LINK", kItemTypeJingle}};
  for (const auto& entry : kWords)
    if (entry.word == word) return entry.code;
  return 0;
}

bool HoldsForItem(const SectionCondition& condition, const clsZEBItemInfo& item) {
  const std::string element = UpperCase(condition.tag.element);
  if (element == "ITEMTYPE")
    return (item->ItemType == ItemTypeOfWord(condition.operand)) == condition.wantsEqual;
  // The operand is in capitals and the value is not: in effect a test whether there is a value.
  return (item.GetElementByName(element, true) == condition.operand) == condition.wantsEqual;
}

bool HoldsForSpecial(const SectionCondition& condition, const ServiceSnapshot& snapshot) {
  static constexpr struct {
    std::string_view element;
    std::string ServiceSnapshot::*value;
  } kElements[] = {{"PRESENTERFULLNAME", &ServiceSnapshot::PresenterFullName},
                   {"PRESENTERREFERENCE", &ServiceSnapshot::PresenterReference},
                   {"SHOWREFERENCE", &ServiceSnapshot::ShowReference},
                   {"SHOWTITLE", &ServiceSnapshot::ShowTitle}};
  const std::string element = UpperCase(condition.tag.element);
  for (const auto& entry : kElements)
    // Small letters against capitals: only values without letters can be equal.
    if (entry.element == element)
      return (LowerCase(snapshot.*entry.value) == condition.operand) == condition.wantsEqual;
  return false;
}

}  // namespace

std::optional<SectionCondition> ParseSectionCondition(std::string_view content) {
  if (!content.starts_with(kConditionStart)) return std::nullopt;
  SectionCondition condition;
  const Extract name = ExtractToDelimiter(content, 2, '>');
  condition.tag = SplitTagName(name.text);

  // Without a ">" the operand is read from the start of the content.
  std::size_t operandStart = name.Next();
  const std::string_view afterTag = content.substr(operandStart);
  if (afterTag.starts_with('=')) {
    condition.wantsEqual = true;
    operandStart += 1;
  } else if (afterTag.starts_with("!=")) {
    operandStart += 2;
  }
  const Extract operand = ExtractToDelimiter(content, operandStart, ')');
  condition.operand = UpperCase(operand.text);
  condition.body = operand.Next();
  return condition;
}

ShownPart Evaluate(const SectionCondition& condition, const ServiceSnapshot& snapshot) {
  bool holds = false;
  if (const clsZEBItemInfo* item = ItemOfSlot(snapshot, condition.tag.slot))
    holds = HoldsForItem(condition, *item);
  else if (condition.tag.slot == kSpecialSlot)
    holds = HoldsForSpecial(condition, snapshot);
  else
    return ShownPart::kAll;  // the condition stays in the text, for its author to see
  return holds ? ShownPart::kBody : ShownPart::kNothing;
}

bool MayShowAll(const SectionCondition& condition) {
  return condition.tag.slot != kSpecialSlot && !AlwaysHasItem(condition.tag.slot);
}

}  // namespace zeb
