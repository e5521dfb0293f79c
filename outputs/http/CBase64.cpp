#include "outputs/http/CBase64.h"

namespace zeb {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string CBase64::EncodeString(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  std::uint32_t bits = 0;
  int held = 0;  // bits that are not written yet
  for (const char byte : bytes) {
    bits = (bits << 8 | static_cast<std::uint8_t>(byte)) & 0xFFFFu;
    for (held += 8; held >= 6; held -= 6) text += kAlphabet[bits >> (held - 6) & 63u];
  }
  if (held > 0) text += kAlphabet[bits << (6 - held) & 63u];
  while (text.size() % 4 != 0) text += '=';
  return text;
}

std::string CBase64::EncodeByteArray(const std::vector<std::uint8_t>& bytes) {
  return EncodeString(std::string(bytes.begin(), bytes.end()));
}

std::string CBase64::DecodeToString(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int held = 0;
  for (const char character : text) {
    const std::size_t value = kAlphabet.find(character);
    if (value == std::string_view::npos) continue;
    bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFFu;
    held += 6;
    if (held < 8) continue;
    held -= 8;
    bytes += static_cast<char>(bits >> held & 0xFFu);
  }
  return bytes;
}

std::vector<std::uint8_t> CBase64::DecodeToByteArray(std::string_view text) {
  const std::string bytes = DecodeToString(text);
  return {bytes.begin(), bytes.end()};
}

}  // namespace zeb
