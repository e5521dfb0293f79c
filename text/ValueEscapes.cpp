#include "text/ValueEscapes.h"

#include "text/HexDigits.h"

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

}  // namespace

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
