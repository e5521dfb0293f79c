// The output half of text/Encodings.h: named character sets, and what becomes of characters that they lack.
#include <utf8proc.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <optional>

#include "text/CharacterTables.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

struct SetName {
  CharacterSet set;
  std::string_view name;
};
constexpr std::array<SetName, 5> kSetNames = {{{CharacterSet::kUtf8, "UTF-8"},
                                               {CharacterSet::kWindows1252, "Windows-1252"},
                                               {CharacterSet::kIso8859_1, "ISO-8859-1"},
                                               {CharacterSet::kRds, "RDS"},
                                               {CharacterSet::kEbuLatin, "EBU Latin"}}};

// Characters that Unicode does not decompose, with the plain one that a reader takes them for.
char32_t PlainLook(char32_t c) {
  struct Group {
    std::u32string_view characters;
    char32_t plain;
  };
  static constexpr Group kGroups[] = {
      {U"‘’‚‛′ʼ´`‹›", U'\''}, {U"“”„‟″«»", U'"'}, {U"‐‑‒–—―−~", U'-'}, {U"…·", U'.'}, {U"•×", U'x'},
      {U"÷⁄", U'/'},          {U"¦‖", U'|'},      {U"\t\r", U' '},     {U"łŀ", U'l'}, {U"ŁĿ", U'L'},
      {U"øœ", U'o'},          {U"ØŒ", U'O'},      {U"đð", U'd'},       {U"ĐÐ", U'D'}, {U"æ", U'a'},
      {U"Æ", U'A'},           {U"ß", U's'},       {U"ẞ", U'S'},        {U"þŧ", U't'}, {U"ÞŦ", U'T'},
      {U"ħ", U'h'},           {U"Ħ", U'H'},       {U"ıĳ", U'i'},       {U"Ĳ", U'I'},  {U"ĸ", U'k'},
      {U"ŋ", U'n'},           {U"Ŋ", U'N'},       {U"µμ", U'u'},       {U"ƒ", U'f'},  {U"ə", U'e'},
      {U"Ə", U'E'},           {U"€", U'E'},       {U"¡", U'!'},        {U"{", U'('},  {U"}", U')'},
      {U"|\\", U'/'},
  };
  for (const Group& group : kGroups)
    if (group.characters.find(c) != std::u32string_view::npos) return group.plain;
  return 0;
}

// What the character is without its marks: its first part when the others are marks; 0 when it has no parts.
// A compatibility form counts when it is another form of one character (a wide letter), not of several (½).
char32_t BaseOf(char32_t c) {
  std::array<utf8proc_int32_t, 24> parts{};
  int boundary = 0;
  const auto options = static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT);
  const utf8proc_ssize_t count =
      utf8proc_decompose_char(static_cast<utf8proc_int32_t>(c), parts.data(),
                              static_cast<utf8proc_ssize_t>(parts.size()), options, &boundary);
  if (count < 1 || count > static_cast<utf8proc_ssize_t>(parts.size())) return 0;
  for (std::size_t i = 1; i < static_cast<std::size_t>(count); ++i)
    if (utf8proc_category(parts[i]) != UTF8PROC_CATEGORY_MN) return 0;
  const auto base = static_cast<char32_t>(parts[0]);
  return base == c ? 0 : base;
}

// Marks and invisible characters (joiners, variation selectors) are part of the look of their neighbours.
bool HasNoPlace(char32_t c) {
  const utf8proc_category_t category = utf8proc_category(static_cast<utf8proc_int32_t>(c));
  return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_ME ||
         category == UTF8PROC_CATEGORY_CF;
}

// The byte of the nearest look that the set has.
std::optional<unsigned char> ByteForLook(char32_t c, CharacterSet set) {
  std::optional<unsigned char> byte;
  for (char32_t look = PlainLook(c); look != 0 && !byte; look = PlainLook(look)) byte = ByteFor(look, set);
  return byte;
}

void AppendTransliterated(std::string& bytes, char32_t c, CharacterSet set) {
  if (HasNoPlace(c)) return;
  std::optional<unsigned char> byte = ByteForLook(c, set);
  if (const char32_t base = BaseOf(c); !byte && base != 0) {
    byte = ByteFor(base, set);
    if (!byte) byte = ByteForLook(base, set);
  }
  bytes += byte ? static_cast<char>(*byte) : '?';
}

// A letter and its mark as one character where there is one: the sets hold only those.
std::string Composed(std::string_view text) {
  utf8proc_uint8_t* composed = nullptr;
  const auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);
  const utf8proc_ssize_t size = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                             static_cast<utf8proc_ssize_t>(text.size()), &composed, options);
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(composed, &std::free);
  if (size < 0) return std::string(text);
  return std::string(reinterpret_cast<const char*>(composed), static_cast<std::size_t>(size));
}

std::string EncodeCharacters(std::string_view text, CharacterSet set) {
  std::string bytes;
  bytes.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    const char32_t c = NextCharacter(text, at);
    if (const auto byte = ByteFor(c, set))
      bytes += static_cast<char>(*byte);
    else
      AppendTransliterated(bytes, c, set);
  }
  return bytes;
}

bool IsAscii(std::string_view text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

}  // namespace

CharacterSet CharacterSetByName(std::string_view name, CharacterSet byDefault) {
  for (const SetName& known : kSetNames)
    if (EqualIgnoringAsciiCase(known.name, name)) return known.set;
  return byDefault;
}

std::string_view CharacterSetName(CharacterSet set) {
  for (const SetName& known : kSetNames)
    if (known.set == set) return known.name;
  return kSetNames[0].name;
}

std::string EncodeFor(std::string_view text, CharacterSet set) {
  if (set == CharacterSet::kUtf8) return std::string(text);
  return IsAscii(text) ? EncodeCharacters(text, set) : EncodeCharacters(Composed(text), set);
}

}  // namespace zeb
