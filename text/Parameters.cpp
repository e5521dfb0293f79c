#include "text/Parameters.h"

#include "text/Encodings.h"
#include "text/HexEscapes.h"
#include "text/LetterCase.h"

namespace zeb {

namespace {

bool IsPlain(std::string_view raw) {
  bool plain = true;
  for (const char c : raw) plain &= (static_cast<unsigned char>(c) < 0x80) & (c != '{');
  return plain;
}

}  // namespace

std::string ParameterValue(std::string_view arguments, std::string_view key) {
  for (std::size_t at = 0; at < arguments.size();) {
    if (arguments.size() - at > key.size() && arguments[at + key.size()] == '=' &&
        EqualIgnoringAsciiCase(arguments.substr(at, key.size()), key))
      return DecodeValue(RawValueAt(arguments, at + key.size() + 1));
    const std::size_t blank = arguments.find(' ', at);
    if (blank == std::string_view::npos) break;
    at = blank + 1;
  }
  return {};
}

std::string_view RawValueAt(std::string_view message, std::size_t start) {
  if (start >= message.size()) return {};
  const char end = message[start] == '"' ? '"' : ' ';
  if (end == '"') ++start;
  return message.substr(start, message.find(end, start) - start);
}

std::string DecodeValue(std::string_view raw) {
  return IsPlain(raw) ? std::string(raw) : DecodeLenient(UndoHexEscapes(raw));
}

}  // namespace zeb
