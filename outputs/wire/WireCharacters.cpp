#include "outputs/wire/WireCharacters.h"

#include <algorithm>

#include "text/Utf8.h"

namespace zeb {

namespace {

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20;
}

// EBU Latin has letters where ASCII has control characters; these are what they look like without their
// marks.
constexpr std::string_view kPlainOfLowBytes = "?EIUAEDSTC??GLZNaeiuaedstcNEglz";

// `text` holds no control characters, and nothing in it may come out as one. A soft hyphen (1F in RDS and EBU
// Latin) ends and switches nothing.
void AppendPlain(std::string& bytes, std::string_view text, CharacterSet set) {
  for (const char c : EncodeFor(text, set)) {
    const auto byte = static_cast<unsigned char>(c);
    bytes += byte < kPlainOfLowBytes.size() ? kPlainOfLowBytes[byte] : c;
  }
}

}  // namespace

std::string EncodeForWire(std::string_view text, CharacterSet set) {
  if (set == CharacterSet::kUtf8) return std::string(text);
  std::string bytes;
  while (!text.empty()) {
    const auto control = std::find_if(text.begin(), text.end(), IsControl);
    const auto plain = static_cast<std::size_t>(control - text.begin());
    if (plain > 0) AppendPlain(bytes, text.substr(0, plain), set);
    text.remove_prefix(plain);
    if (text.empty()) break;
    bytes += text.front();
    text.remove_prefix(1);
  }
  return bytes;
}

std::size_t CountInSet(std::string_view text, CharacterSet set) {
  return set == CharacterSet::kUtf8 ? CountCharacters(text) : EncodeForWire(text, set).size();
}

// Counting never goes down as the text grows, so the cut can be found by halving.
std::string_view CutInSet(std::string_view text, CharacterSet set, std::size_t characters) {
  if (set == CharacterSet::kUtf8) return FirstCharacters(text, characters);
  if (CountInSet(text, set) <= characters) return text;
  std::size_t fits = 0, tooMany = CountCharacters(text);
  while (tooMany - fits > 1) {
    const std::size_t middle = fits + (tooMany - fits) / 2;
    (CountInSet(FirstCharacters(text, middle), set) <= characters ? fits : tooMany) = middle;
  }
  return FirstCharacters(text, fits);
}

std::string KeepToSet(std::string_view text, CharacterSet set) {
  if (set == CharacterSet::kUtf8) return std::string(text);
  std::string kept;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t start = at;
    NextCharacter(text, at);
    const std::string_view character = text.substr(start, at - start);
    const std::string bytes = EncodeFor(character, set);
    // A replacement consists of bytes that mean the same in ASCII and in the set; anything else is the
    // character's own place in the set.
    bool replaced = character.size() > 1 || bytes == "?";
    for (const char byte : bytes)
      replaced = replaced && static_cast<unsigned char>(byte) < 0x80 &&
                 EncodeFor(std::string(1, byte), set) == std::string(1, byte);
    if (replaced)
      kept += bytes;
    else
      kept += character;
  }
  return kept;
}

}  // namespace zeb
