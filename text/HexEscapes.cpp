#include "text/HexEscapes.h"

#include "text/HexDigits.h"

namespace zeb {

std::string UndoHexEscapes(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size());
  std::size_t at = 0;
  while (true) {
    const std::size_t brace = bytes.find('{', at);
    if (brace == std::string_view::npos) break;
    result.append(bytes, at, brace - at);
    if (bytes.size() - brace >= 4 && bytes[brace + 3] == '}') {
      const int high = CapitalHexDigit(bytes[brace + 1]);
      const int low = CapitalHexDigit(bytes[brace + 2]);
      if (high >= 0 && low >= 0) {
        result += static_cast<char>(static_cast<unsigned char>(high * 16 + low));
        at = brace + 4;
        continue;
      }
    }
    result += '{';
    at = brace + 1;
  }
  result.append(bytes, at);
  return result;
}

std::string EscapeValue(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 8);
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '{' || byte < 0x20 || byte == 0x7F) {
      result += '{';
      result += kHexDigits[byte >> 4];
      result += kHexDigits[byte & 0x0F];
      result += '}';
    } else {
      result += c;
    }
  }
  return result;
}

}  // namespace zeb
