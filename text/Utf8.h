// UTF-8 by characters. A character is a code point; positions and lengths count code points, offsets count
// bytes. Text inside the program is always valid UTF-8 (text/Encodings.h makes it so at the borders).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb {

bool IsValidUtf8(std::string_view bytes);
std::size_t CountCharacters(std::string_view text);
// The byte offset after the first `characters` characters of the text from `offset` on; the text's size when
// it is shorter.
std::size_t SkipCharacters(std::string_view text, std::size_t offset, std::size_t characters);
inline std::string_view FirstCharacters(std::string_view text, std::size_t characters) {
  return text.substr(0, SkipCharacters(text, 0, characters));
}
void AppendCharacter(std::string& text, char32_t character);
// The character at `offset` (which must be inside the text); moves `offset` behind it.
char32_t NextCharacter(std::string_view text, std::size_t& offset);

}  // namespace zeb
