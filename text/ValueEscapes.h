// How a value is written so that it cannot break the language around it: "A & B" is no entity in a page, and
// a quote ends no string.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

// kNone: as it is. kHtml, kXml: the five characters of markup as entities. kJson: the inside of a string.
enum class ValueEscape { kNone, kHtml, kXml, kJson };

// Appends the value. What the language cannot hold at all (a control character in XML) becomes a blank.
void AppendEscaped(std::string& to, std::string_view value, ValueEscape escape);

}  // namespace zeb
