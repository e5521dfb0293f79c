#include "dialogs/TemplateMarks.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/ItemType.h"
#include "core/ServiceSnapshot.h"
#include "core/clsZEBService.h"
#include "dialogs/TemplateBuilder.h"
#include "templates/FindConstruct.h"
#include "templates/SectionCondition.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kPictureElement = "PICTUREFILENAME";

ServiceSnapshot WithAllSlots() {
  ServiceSnapshot snapshot;
  snapshot.nextItems.resize(kMaxNextItems);
  snapshot.previousItems.resize(kMaxNextItems);
  return snapshot;
}

// A template's marks in the making.
class Marker {
 public:
  struct Bounds {
    std::size_t marks, remarks;
  };
  Marker(std::string_view text, Bounds bounds) : text_(text), bounds_(bounds), station_(WithAllSlots()) {}

  enum class BuilderCheck { kNo, kYes };
  TemplateMarks Mark(BuilderCheck check) && {
    if (check == BuilderCheck::kYes) MarkFault();
    MarkSections();
    MarkTags();
    return std::move(result_);
  }

 private:
  void Add(MarkKind kind, std::size_t start, std::size_t length) {
    if (result_.marks.size() < bounds_.marks) result_.marks.push_back({kind, start, length});
  }

  void Remark(std::size_t at, std::string_view remark, std::string_view what, bool fault = false) {
    if (result_.remarks.size() == bounds_.remarks) return;
    const auto lineEnds = std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    result_.remarks.push_back({remark, std::string(what), static_cast<int>(lineEnds) + 1, at, fault});
  }

  void MarkFault() {
    const std::optional<SectionFault> fault = FindSectionFault(text_);
    if (!fault) return;
    Add(MarkKind::kUnmatched, fault->at, 1);
    static constexpr std::array<std::string_view, 3> kTexts = {
        "']' without a matching '['", "'[' without a matching ']'",
        "'[' inside another section: sections cannot be nested"};
    Remark(fault->at, kTexts[fault->kind], {}, true);
  }

  void MarkSections() {
    std::size_t from = 0;
    while (const auto section = FindSection(text_, from)) {
      Add(MarkKind::kSection, section->open, 1);
      if (section->close < text_.size()) Add(MarkKind::kSection, section->close, 1);
      const std::size_t content = section->open + 1;
      MarkCondition(content, text_.substr(content, section->close - content));
      from = section->close + 1;
      if (from >= text_.size()) break;
    }
  }

  void MarkCondition(std::size_t at, std::string_view content) {
    const std::optional<SectionCondition> condition = ParseSectionCondition(content);
    if (!condition) return;
    const std::size_t length = condition->body == 0 ? kConditionStart.size() : condition->body;
    const bool sound = condition->body != 0 && IsSound(at, *condition);
    if (condition->body == 0) Remark(at, "A condition without a ')' after its tag", {}, true);
    Add(sound ? MarkKind::kCondition : MarkKind::kUnknown, at, length);
    conditionEnds_.emplace_back(at, at + length);
  }

  bool IsSound(std::size_t at, const SectionCondition& condition) {
    const std::string_view slot = condition.tag.slot, element = condition.tag.element;
    const bool hasLetters = UpperCase(condition.operand) != LowerCase(condition.operand);
    if (slot == kSpecialSlot) {
      if (!CanBeTested(condition))
        return Warn(at, "'%1' cannot be tested: the section never appears", element);
      if (hasLetters)
        return Warn(at, "'%1' is never found equal: only 'is there a value' works", condition.operand);
      return true;
    }
    if (!ItemOfSlot(station_, slot))
      return WarnOfSlot(at, slot, "There is no '%1': the condition is published as it stands");
    if (!clsZEBItemInfo::HasElement(element))
      return Warn(at, "An item has no '%1': it never has a value", element);
    if (EqualIgnoringAsciiCase(element, "ITEMTYPE")) {
      if (condition.operand.empty() || IsTypeWord(condition)) return IsNumberedWell(at, slot);
      return Warn(at, "No type of item is called '%1'", condition.operand);
    }
    if (hasLetters) return Warn(at, "Only a value written in capitals can equal '%1'", condition.operand);
    return IsNumberedWell(at, slot);
  }

  // Of all special elements only some can stand in a condition: one that can is found empty where it is.
  bool CanBeTested(SectionCondition condition) const {
    condition.operand.clear();
    condition.wantsEqual = true;
    return Evaluate(condition, station_) == ShownPart::kBody;
  }

  bool IsTypeWord(SectionCondition condition) const {
    condition.wantsEqual = true;
    condition.tag.slot = "NOW";
    ServiceSnapshot snapshot;
    for (const std::int32_t type : {kItemTypeCart, kItemTypeJingle, kItemTypeAdvert, kItemTypeSong}) {
      snapshot.currentItem.Edit().ItemType = type;
      if (Evaluate(condition, snapshot) == ShownPart::kBody) return true;
    }
    return false;
  }

  void MarkTags() {
    std::size_t from = 0;
    auto condition = conditionEnds_.begin();
    while (const auto tag = FindTag(text_, from)) {
      if (tag->close == std::string_view::npos) {
        Add(MarkKind::kUnmatched, tag->open, kTagStart.size());
        Remark(tag->open, "'<' without a matching '>'", {}, true);
        return;
      }
      while (condition != conditionEnds_.end() && condition->second <= tag->open) ++condition;
      const bool inCondition = condition != conditionEnds_.end() && condition->first <= tag->open;
      const bool sound =
          inCondition || IsSoundTag(tag->open, text_.substr(tag->open + 1, tag->close - tag->open - 1));
      Add(sound ? MarkKind::kTag : MarkKind::kUnknown, tag->open, tag->close + 1 - tag->open);
      from = tag->close + 1;
    }
  }

  bool IsSoundTag(std::size_t at, std::string_view name) {
    const TagName tag = SplitTagName(name);
    if (tag.slot == "SIMPLETEXT") return true;
    if (tag.slot == kSpecialSlot) {
      if (!station_.GetSpecialElementByName(tag.rest).starts_with("Unknown tag")) return true;
      return Warn(at, "'Unknown tag %1' is published in its place", tag.rest);
    }
    if (!ItemOfSlot(station_, tag.slot))
      return WarnOfSlot(at, tag.slot, "There is no '%1': the tag is published without its brackets");
    if (!clsZEBItemInfo::HasElement(tag.element))
      return Warn(at, "An item has no '%1': nothing is published in its place", tag.element);
    if (tag.element != kPictureElement && EqualIgnoringAsciiCase(tag.element, kPictureElement))
      return Warn(
          at,
          "'%1' is the full name as it was given, and the picture is not sent along: write PICTUREFILENAME",
          tag.element);
    return IsNumberedWell(at, tag.slot);
  }

  bool WarnOfSlot(std::size_t at, std::string_view slot, std::string_view otherwise) {
    const std::string capitals = UpperCase(slot);
    const bool known = capitals != slot && (ItemOfSlot(station_, capitals) || capitals == kSpecialSlot);
    return Warn(at, known ? "'%1' must be written in capitals" : otherwise, slot);
  }

  // Whether the number that seems to be the slot's is taken for it.
  bool IsNumberedWell(std::size_t at, std::string_view slot) {
    const std::size_t last = slot.find_last_not_of(kDigits);
    if (last == std::string_view::npos || last + 1 == slot.size()) return true;
    const int number = LeadingDigits(slot.substr(last + 1));
    const clsZEBItemInfo* const item = ItemOfSlot(station_, slot);
    if (item == station_.NextItem(number) || item == station_.PreviousItem(number)) return true;
    return Warn(at, "'%1': its number counts for nothing; numbers stand behind NEXT and PREV only", slot);
  }

  bool Warn(std::size_t at, std::string_view remark, std::string_view what) {
    Remark(at, remark, what);
    return false;
  }

  const std::string_view text_;
  const Bounds bounds_;
  const ServiceSnapshot station_;
  std::vector<std::pair<std::size_t, std::size_t>> conditionEnds_;
  TemplateMarks result_;
};

}  // namespace

TemplateMarks MarkTemplate(std::string_view text) {
  if (text.size() <= kMostMarkedBytes)
    return Marker(text, {kMostMarks, kMostRemarks}).Mark(Marker::BuilderCheck::kYes);
  TemplateMarks none;
  none.tooLong = true;
  return none;
}

std::vector<TemplateRemark> RemarksOf(std::string_view text, std::size_t most) {
  return Marker(text, {0, most}).Mark(Marker::BuilderCheck::kNo).remarks;
}

}  // namespace zeb
