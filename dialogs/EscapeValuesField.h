// EscapeValuesField: the field in which every output's property dialog, and that of a file pair, offers how
// values are escaped. For the desktop program.
#pragma once

#include <array>
#include <string>
#include <string_view>

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

}  // namespace zeb
