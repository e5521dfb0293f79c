// The shape of single UTF-8 sequences; used inside this folder only.
#pragma once

#include <cstddef>
#include <string_view>

namespace zeb {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

constexpr bool IsUtf8Continuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

// The length (1 to 4) of the valid sequence that starts at `at`, or 0. Overlong forms, surrogates and numbers
// above 10FFFF are not valid.
constexpr std::size_t Utf8SequenceLength(std::string_view bytes, std::size_t at) {
  const auto first = static_cast<unsigned char>(bytes[at]);
  if (first < 0x80) return 1;
  std::size_t length = 0;
  unsigned char low = 0x80;  // bounds of the second byte
  unsigned char high = 0xBF;
  if (first >= 0xC2 && first <= 0xDF) {
    length = 2;
  } else if (first >= 0xE0 && first <= 0xEF) {
    length = 3;
    if (first == 0xE0) low = 0xA0;
    if (first == 0xED) high = 0x9F;
  } else if (first >= 0xF0 && first <= 0xF4) {
    length = 4;
    if (first == 0xF0) low = 0x90;
    if (first == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (bytes.size() - at < length) return 0;
  const auto second = static_cast<unsigned char>(bytes[at + 1]);
  if (second < low || second > high) return 0;
  for (std::size_t i = 2; i < length; ++i)
    if (!IsUtf8Continuation(bytes[at + i])) return 0;
  return length;
}

}  // namespace zeb
