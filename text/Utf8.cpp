#include "text/Utf8.h"

#include <cstdint>
#include <cstring>

#include "text/Utf8Sequence.h"

namespace zeb {

bool IsValidUtf8(std::string_view bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    // Most text is ASCII: eight bytes at a time.
    std::uint64_t eight = 0;
    while (bytes.size() - at >= sizeof eight) {
      std::memcpy(&eight, bytes.data() + at, sizeof eight);
      if ((eight & 0x8080808080808080u) != 0) break;
      at += sizeof eight;
    }
    if (at == bytes.size()) break;
    const std::size_t length = Utf8SequenceLength(bytes, at);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

std::size_t CountCharacters(std::string_view text) {
  std::size_t count = text.size(), at = 0;
  // Eight bytes at a time: of each its highest bit, unless the next one is set too.
  for (std::uint64_t eight = 0; text.size() - at >= sizeof eight; at += sizeof eight) {
    std::memcpy(&eight, text.data() + at, sizeof eight);
    const std::uint64_t continuations = (eight >> 7) & ~(eight >> 6) & 0x0101010101010101u;
    count -= static_cast<std::size_t>((continuations * 0x0101010101010101u) >> 56);
  }
  for (; at < text.size(); ++at) count -= IsUtf8Continuation(text[at]) ? 1u : 0u;
  return count;
}

std::size_t SkipCharacters(std::string_view text, std::size_t offset, std::size_t characters) {
  while (characters > 0 && offset < text.size()) {
    // Most text is ASCII: eight characters at a time.
    for (std::uint64_t eight = 0; characters >= sizeof eight && text.size() - offset >= sizeof eight;) {
      std::memcpy(&eight, text.data() + offset, sizeof eight);
      if ((eight & 0x8080808080808080u) != 0) break;
      offset += sizeof eight;
      characters -= sizeof eight;
    }
    if (characters == 0 || offset == text.size()) break;
    ++offset;
    while (offset < text.size() && IsUtf8Continuation(text[offset])) ++offset;
    --characters;
  }
  return offset < text.size() ? offset : text.size();
}

void AppendCharacter(std::string& text, char32_t character) {
  const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
  if (character < 0x80) {
    text += byte(character);
  } else if (character < 0x800) {
    text += byte(0xC0 | (character >> 6));
    text += byte(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    // Half of a surrogate pair is no character, and would make the text invalid.
    if (character >= 0xD800 && character < 0xE000) character = kReplacementCharacter;
    text += byte(0xE0 | (character >> 12));
    text += byte(0x80 | ((character >> 6) & 0x3F));
    text += byte(0x80 | (character & 0x3F));
  } else if (character < 0x110000) {
    text += byte(0xF0 | (character >> 18));
    text += byte(0x80 | ((character >> 12) & 0x3F));
    text += byte(0x80 | ((character >> 6) & 0x3F));
    text += byte(0x80 | (character & 0x3F));
  } else {
    AppendCharacter(text, kReplacementCharacter);
  }
}

char32_t NextCharacter(std::string_view text, std::size_t& offset) {
  const auto first = static_cast<unsigned char>(text[offset]);
  if (first < 0x80) {
    ++offset;
    return first;
  }
  const std::size_t length = Utf8SequenceLength(text, offset);
  if (length == 0) {
    // Cannot happen in text; moves on all the same, so that no caller loops for ever.
    ++offset;
    return kReplacementCharacter;
  }
  char32_t character = first & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i)
    character = (character << 6) | (static_cast<unsigned char>(text[offset + i]) & 0x3Fu);
  offset += length;
  return character;
}

}  // namespace zeb
