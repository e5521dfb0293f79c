#include "dialogs/EscapeValuesField.h"

#include "text/ValueEscapes.h"

namespace zeb {

std::string CheckEscapeValues(std::string_view word) {
  return EscapeChoiceByName(word) ? "" : "Values can be escaped as html, xml, json or auto, or not at all";
}

}  // namespace zeb
