#include "text/PercentEncoding.h"

#include "text/HexDigits.h"

namespace zeb {
namespace {

bool IsLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

void AppendEncoded(std::string& to, char c) {
  const auto byte = static_cast<unsigned char>(c);
  to += '%';
  to += kHexDigits[byte >> 4];
  to += kHexDigits[byte & 0x0F];
}

}  // namespace

std::string UrlEncode(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size() + bytes.size() / 4);
  for (const char c : bytes) {
    if (IsLetterOrDigit(c))
      result += c;
    else if (c == ' ')
      result += '+';
    else
      AppendEncoded(result, c);
  }
  return result;
}

std::string PercentEncoded(std::string_view bytes) {
  constexpr std::string_view kAlsoKept = "-._~";
  std::string result;
  for (const char c : bytes) {
    if (IsLetterOrDigit(c) || kAlsoKept.find(c) != std::string_view::npos)
      result += c;
    else
      AppendEncoded(result, c);
  }
  return result;
}

std::string UrlDecode(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '+') {
      result += ' ';
    } else if (text[at] == '%' && text.size() - at > 2 && HexDigit(text[at + 1]) >= 0 &&
               HexDigit(text[at + 2]) >= 0) {
      const int byte = HexDigit(text[at + 1]) * 16 + HexDigit(text[at + 2]);
      result += static_cast<char>(static_cast<unsigned char>(byte));
      at += 2;
    } else {
      result += text[at];  // a lone "%" stands for itself
    }
  }
  return result;
}

}  // namespace zeb
