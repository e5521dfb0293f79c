// How a value is written so that it cannot break the language around it: "A & B" is no entity in a page, and
// a quote ends no string.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace zeb {

// kNone: as it is. kHtml, kXml: the five characters of markup as entities. kJson: the inside of a string.
enum class ValueEscape { kNone, kHtml, kXml, kJson };

// Appends the value. What the language cannot hold at all (a control character in XML) becomes a blank.
void AppendEscaped(std::string& to, std::string_view value, ValueEscape escape);

// The words of the settings that say how values are escaped ("EscapeValues"), without regard to case. kAuto:
// by what is made of the template.
enum class EscapeChoice { kOff, kHtml, kXml, kJson, kAuto };
inline constexpr std::array<std::string_view, 4> kEscapeWords = {"html", "xml", "json", "auto"};
// Nothing: there is no such word. "" and "off" are kOff.
std::optional<EscapeChoice> EscapeChoiceByName(std::string_view name);
// "" for a word that there is, else what to tell of it.
std::string WrongEscapeWord(std::string_view name);

// What the word means for a template that becomes `destination` ("": no file). `auto` goes by the
// destination's ending, else by the first text of the template; where neither tells, and for a wrong word,
// kNone.
ValueEscape EscapeFor(std::string_view name, std::string_view destination, std::string_view templateText);

}  // namespace zeb
