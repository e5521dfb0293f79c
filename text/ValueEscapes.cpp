#include "text/ValueEscapes.h"

#include <algorithm>

#include "text/HexDigits.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {
namespace {

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20;
}

bool IsWhiteSpaceOfXml(char c) {
  return c == '\t' || c == '\n' || c == '\r';
}

void AppendMarkup(std::string& to, char c, bool xml) {
  switch (c) {
    case '&':
      to += "&amp;";
      return;
    case '<':
      to += "&lt;";
      return;
    case '>':
      to += "&gt;";
      return;
    case '"':
      to += "&quot;";
      return;
    case '\'':
      to += "&#39;";  // HTML 4 does not know &apos;
      return;
    default:
      to += xml && IsControl(c) && !IsWhiteSpaceOfXml(c) ? ' ' : c;
  }
}

void AppendUnicodeEscape(std::string& to, char c) {
  const auto byte = static_cast<unsigned char>(c);
  to.append("\\u00");
  to += kHexDigits[byte >> 4];
  to += kHexDigits[byte & 0x0F];
}

void AppendJson(std::string& to, char c) {
  switch (c) {
    case '"':
    case '\\':
      to += '\\';
      to += c;
      return;
    case '\n':
      to += "\\n";
      return;
    case '\r':
      to += "\\r";
      return;
    case '\t':
      to += "\\t";
      return;
    default:
      // "<" too, so that a value inside a page's script never ends it.
      if (IsControl(c) || c == '<')
        AppendUnicodeEscape(to, c);
      else
        to += c;
  }
}

// Endings of pages, and of the programs that servers make pages with.
constexpr std::string_view kHtmlEndings[] = {"htm", "html", "xhtml", "xht",  "shtml", "shtm", "stm",
                                             "php", "php3", "php4",  "php5", "phtml", "asp",  "aspx",
                                             "jsp", "jspx", "jsf",   "cfm",  "cgi",   "inc",  "tpl"};
constexpr std::string_view kXmlEndings[] = {"xml", "rss", "atom", "rdf", "xspf", "opml", "svg",  "xsl",
                                            "wml", "kml", "asx",  "wax", "wvx",  "smil", "ttml", "plist"};
constexpr std::string_view kJsonEndings[] = {"json", "jsonp", "jsonld", "geojson", "webmanifest", "map"};

template <class Endings>
bool IsOneOf(std::string_view ending, const Endings& endings) {
  return std::any_of(std::begin(endings), std::end(endings),
                     [&](std::string_view known) { return EqualIgnoringAsciiCase(ending, known); });
}

ValueEscape EscapeOfDestination(std::string_view destination) {
  const std::string_view name = FileNamePart(destination);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return ValueEscape::kNone;
  const std::string_view ending = name.substr(dot + 1);
  if (IsOneOf(ending, kHtmlEndings)) return ValueEscape::kHtml;
  if (IsOneOf(ending, kXmlEndings)) return ValueEscape::kXml;
  return IsOneOf(ending, kJsonEndings) ? ValueEscape::kJson : ValueEscape::kNone;
}

// "{0D}" is a hex escape and "[(" begins an optional section: neither begins a JSON text.
bool BeginsJson(std::string_view text) {
  if (text.starts_with('{'))
    return !(text.size() > 3 && text[3] == '}' && HexDigit(text[1]) >= 0 && HexDigit(text[2]) >= 0);
  return text.starts_with('[') && !text.starts_with("[(");
}

ValueEscape EscapeOfText(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  const auto begins = [&](std::string_view word) {
    return EqualIgnoringAsciiCase(text.substr(0, word.size()), word);
  };
  if (begins("<?xml")) return ValueEscape::kXml;
  if (begins("<!doctype html") || begins("<html")) return ValueEscape::kHtml;
  return BeginsJson(text) ? ValueEscape::kJson : ValueEscape::kNone;
}

}  // namespace

std::optional<EscapeChoice> EscapeChoiceByName(std::string_view name) {
  name = TrimBlanks(name);
  if (name.empty() || EqualIgnoringAsciiCase(name, "off")) return EscapeChoice::kOff;
  for (std::size_t i = 0; i < kEscapeWords.size(); ++i)
    if (EqualIgnoringAsciiCase(name, kEscapeWords[i])) return static_cast<EscapeChoice>(i + 1);
  return std::nullopt;
}

std::string WrongEscapeWord(std::string_view name) {
  if (EscapeChoiceByName(name)) return {};
  return "'" + std::string(name) +
         "' is none of html, xml, json, auto and off; values are put in as they are";
}

ValueEscape EscapeFor(std::string_view name, std::string_view destination, std::string_view templateText) {
  switch (EscapeChoiceByName(name).value_or(EscapeChoice::kOff)) {
    case EscapeChoice::kOff:
      break;
    case EscapeChoice::kHtml:
      return ValueEscape::kHtml;
    case EscapeChoice::kXml:
      return ValueEscape::kXml;
    case EscapeChoice::kJson:
      return ValueEscape::kJson;
    case EscapeChoice::kAuto: {
      const ValueEscape byName = EscapeOfDestination(destination);
      return byName != ValueEscape::kNone ? byName : EscapeOfText(templateText);
    }
  }
  return ValueEscape::kNone;
}

void AppendEscaped(std::string& to, std::string_view value, ValueEscape escape) {
  if (escape == ValueEscape::kNone) {
    to += value;
    return;
  }
  for (const char c : value) {
    if (escape == ValueEscape::kJson)
      AppendJson(to, c);
    else
      AppendMarkup(to, c, escape == ValueEscape::kXml);
  }
}

}  // namespace zeb
