#include "dialogs/EscapeValuesField.h"

#include <utility>

#include "text/ValueEscapes.h"

namespace zeb {

std::string CheckEscapeValues(std::string_view word) {
  return EscapeChoiceByName(word) ? "" : "Values can be escaped as html, xml, json or auto, or not at all";
}

std::optional<SheetProblem> EscapeProblem(const Entries& entries) {
  std::string message = CheckEscapeValues(EntryOf(entries, "EscapeValues"));
  if (message.empty()) return std::nullopt;
  return SheetProblem{std::move(message), MessageIcon::kExclamation, "EscapeValues"};
}

}  // namespace zeb
