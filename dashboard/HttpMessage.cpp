#include "dashboard/HttpMessage.h"

#include <algorithm>

#include "text/Lines.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

const std::string& TextOf(const NamedTexts& texts, std::string_view name) {
  static const std::string none;
  const auto found =
      std::find_if(texts.begin(), texts.end(), [&](const auto& pair) { return pair.first == name; });
  return found == texts.end() ? none : found->second;
}

bool Holds(const NamedTexts& texts, std::string_view name) {
  return std::any_of(texts.begin(), texts.end(), [&](const auto& pair) { return pair.first == name; });
}

std::string JsonText(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      quoted += "\\u00";
      quoted += kDigits[c >> 4];
      quoted += kDigits[c & 15];
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

}  // namespace

const std::string& HttpRequest::Header(std::string_view nameInSmallLetters) const {
  return TextOf(headers, nameInSmallLetters);
}

const std::string& HttpRequest::Query(std::string_view name) const {
  return TextOf(query, name);
}

bool HttpRequest::HasHeader(std::string_view nameInSmallLetters) const {
  return Holds(headers, nameInSmallLetters);
}

bool HttpRequest::HasQuery(std::string_view name) const {
  return Holds(query, name);
}

std::string HttpRequest::Cookie(std::string_view name) const {
  for (const auto& [header, value] : headers) {
    if (header != "cookie") continue;
    for (const std::string_view part : SplitAt(value, ";")) {
      const std::string_view pair = TrimBlanks(part);
      const std::size_t equals = pair.find('=');
      if (equals != std::string_view::npos && pair.substr(0, equals) == name)
        return std::string(pair.substr(equals + 1));
    }
  }
  return "";
}

HttpAnswer ErrorAnswer(int status, std::string_view reason) {
  HttpAnswer answer;
  answer.status = status;
  answer.body = "{\"error\":" + JsonText(reason) + "}\n";
  return answer;
}

}  // namespace zeb
