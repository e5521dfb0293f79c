#include "text/LetterCase.h"

#include <utf8proc.h>

#include "text/Utf8.h"
#include "text/Utf8Sequence.h"

namespace zeb {
namespace {

char32_t Lower(char32_t c) {
  return static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(c)));
}
char32_t Upper(char32_t c) {
  return static_cast<char32_t>(utf8proc_toupper(static_cast<utf8proc_int32_t>(c)));
}
char32_t Title(char32_t c) {
  return static_cast<char32_t>(utf8proc_totitle(static_cast<utf8proc_int32_t>(c)));
}

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

// The next character in small letters.
char32_t NextLower(std::string_view text, std::size_t& offset) {
  if (IsAscii(text[offset])) return static_cast<unsigned char>(AsciiLower(text[offset++]));
  return Lower(NextCharacter(text, offset));
}

// Whether `what` is at `offset`, which is then moved behind it.
bool MatchesAt(std::string_view text, std::size_t& offset, std::string_view what) {
  std::size_t at = offset;
  std::size_t inWhat = 0;
  while (inWhat < what.size()) {
    if (at >= text.size()) return false;
    if (NextLower(text, at) != NextLower(what, inWhat)) return false;
  }
  offset = at;
  return true;
}

enum class CharacterKind { kSpace, kLetterOrDigit, kOther };

CharacterKind KindOf(char32_t c) {
  if (c == ' ' || (c >= 9 && c <= 13) || c == 0x85) return CharacterKind::kSpace;
  switch (utf8proc_category(static_cast<utf8proc_int32_t>(c))) {
    case UTF8PROC_CATEGORY_ZS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
      return CharacterKind::kSpace;
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_ND:
      return CharacterKind::kLetterOrDigit;
    default:
      return CharacterKind::kOther;
  }
}

template <class AsciiMap, class Map>
std::string MapCharacters(std::string_view text, AsciiMap ascii, Map map) {
  std::string result;
  result.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    if (IsAscii(text[at]))
      result += ascii(text[at++]);
    else
      AppendCharacter(result, map(NextCharacter(text, at)));
  }
  return result;
}

}  // namespace

std::string LowerCase(std::string_view text) {
  return MapCharacters(text, AsciiLower, Lower);
}

std::string UpperCase(std::string_view text) {
  return MapCharacters(text, AsciiUpper, Upper);
}

std::string CapitaliseWords(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  // Marks before the first letter are passed over ("(live)" gives "(Live)"), digits are not ("1st" stays).
  bool atStart = true;
  std::size_t at = 0;
  while (at < text.size()) {
    const char32_t c = NextCharacter(text, at);
    const CharacterKind kind = KindOf(c);
    AppendCharacter(result, atStart ? Title(c) : Lower(c));
    if (kind == CharacterKind::kSpace)
      atStart = true;
    else if (kind == CharacterKind::kLetterOrDigit)
      atStart = false;
  }
  return result;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  std::size_t end = 0;
  return MatchesAt(a, end, b) && end == a.size();
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view start) {
  std::size_t end = 0;
  return MatchesAt(text, end, start);
}

std::size_t FindIgnoringCase(std::string_view text, std::string_view what, std::size_t from,
                             std::size_t* matchEnd) {
  if (from > text.size()) return std::string_view::npos;
  if (what.empty()) {
    if (matchEnd != nullptr) *matchEnd = from;
    return from;
  }
  std::size_t inWhat = 0;
  const char32_t first = NextLower(what, inWhat);
  std::size_t at = from;
  while (at < text.size()) {
    const std::size_t start = at;
    if (NextLower(text, at) != first) continue;
    std::size_t end = start;
    if (!MatchesAt(text, end, what)) continue;
    if (matchEnd != nullptr) *matchEnd = end;
    return start;
  }
  return std::string_view::npos;
}

bool EqualIgnoringAsciiCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  return true;
}

std::size_t FindIgnoringAsciiCase(std::string_view text, std::string_view what, std::size_t from) {
  if (from > text.size() || what.size() > text.size() - from) return std::string_view::npos;
  if (what.empty()) return from;
  const char lower = AsciiLower(what[0]);
  const char upper = AsciiUpper(what[0]);
  for (std::size_t at = from; at + what.size() <= text.size(); ++at) {
    if (text[at] != lower && text[at] != upper) continue;
    if (EqualIgnoringAsciiCase(text.substr(at, what.size()), what)) return at;
  }
  return std::string_view::npos;
}

}  // namespace zeb
