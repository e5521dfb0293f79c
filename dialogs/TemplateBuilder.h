// TemplateBuilder: what helps people to write templates (frmFormatCreator): the names on offer, what choosing
// one inserts, deleting a tag as one unit, and the check of optional sections. Draws nothing. For the desktop
// program.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

enum class BuilderSlot { kNow, kNext, kPrevious, kComing, kSpecial };  // in the order of the list

inline constexpr std::string_view kBuilderSlotNames[] = {"Now", "Next", "Previous", "Coming", "Special"};

// The names offered for a slot. A line of dashes separates the usual ones from the rest.
std::span<const std::string_view> BuilderFields(BuilderSlot slot);

// What adding a field puts in the place of the selection; "" for the line of dashes.
std::string BuilderInsertion(BuilderSlot slot, std::string_view field);

// For the backspace key without a selection: the offset of the "<" from which to delete up to the caret, when
// a tag ends there. Nothing: the key acts as it always does.
std::optional<std::size_t> TagBeforeCaret(std::string_view text, std::size_t caret);

// Where the optional sections of a template are at fault first: the bracket without its counterpart, or the
// one that opens a section inside another.
struct SectionFault {
  enum Kind { kNoStart, kNoEnd, kNested };
  Kind kind;
  std::size_t at;  // offset of the bracket
};
std::optional<SectionFault> FindSectionFault(std::string_view text);
// "" when the optional sections are balanced and not nested, else the message to show.
std::string_view SectionProblem(std::string_view text);

extern const std::string_view kBuilderHelp;

}  // namespace zeb
