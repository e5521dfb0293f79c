// EscapeValuesField: the field in which every output's property dialog, and that of a file pair, offers how
// values are escaped. For the desktop program.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "core/PropertySheet.h"

namespace zeb {

inline constexpr std::string_view kEscapeCaption = "&Escape values for:";

// What the list shows for each word of the setting. The first one is that of a new output.
struct EscapeText {
  std::string_view word, text;
};
inline constexpr std::array<EscapeText, 5> kEscapeTexts = {{
    {"", "Nothing (put them in as they are)"},
    {"html", "Web page (HTML)"},
    {"xml", "XML"},
    {"json", "JSON"},
    {"auto", "What the page or template is"},
}};

// The message to show instead of closing the dialog; "" when all is well. The list can be typed into.
std::string CheckEscapeValues(std::string_view word);

// The problem of a sheet's field for it; nothing when all is well.
std::optional<SheetProblem> EscapeProblem(const Entries& entries);

template <class S>
void AddEscapeField(PropertySheet& sheet, SettingTable<S> table, S& draft) {
  PropertyField& field = AddField(
      sheet, table, draft, {.name = "EscapeValues", .caption = kEscapeCaption, .kind = FieldKind::kChoice});
  for (const EscapeText& one : kEscapeTexts)
    field.choices.push_back({std::string(one.word), std::string(one.text)});
  if (!sheet.check) sheet.check = EscapeProblem;
}

}  // namespace zeb
