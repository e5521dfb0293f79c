#include "text/CharacterTables.h"

#include <algorithm>
#include <string_view>

namespace zeb {
namespace {

// Rows of sixteen characters. A table names the characters from 80 on (EBU Latin: all), U+0000 where a byte
// has none.
constexpr std::u32string_view kWindows1252Row8 =
    U"\u20AC\U00000081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\U0000008D\u017D"
    U"\U0000008F"
    U"\U00000090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\U0000009D\u017E"
    U"\u0178";
static_assert(kWindows1252Row8.size() == 32);

// RDS code table G0 of IEC 62106 (the same as EN 50067 table E.1), from 80 on.
constexpr std::u32string_view kRdsFrom80 =
    U"áàéèíìóòúùÑÇŞß¡Ĳ"
    U"âäêëîïôöûüñçşǧıĳ"
    U"ªα©‰Ǧěňőπ€£$←↑→↓"
    U"º¹²³±İńűµ¿÷°¼½¾§"
    U"ÁÀÉÈÍÌÓÒÚÙŘČŠŽÐĿ"
    U"ÂÄÊËÎÏÔÖÛÜřčšžđŀ"
    U"ÃÅÆŒŷÝÕØÞŊŔĆŚŹŦð"
    U"ãåæœŵýõøþŋŕćśźŧ";
static_assert(kRdsFrom80.size() == 127);

// The complete EBU Latin based repertoire of ETSI TS 101 756, rows 0 and 1, and from 7B on.
constexpr std::u32string_view kEbuLatinFrom01 =
    U"ĘĮŲĂĖĎȘȚĊ\n\vĠĹŻŃ"
    U"ąęįųăėďșțċŇĚġĺż\U0000001F";
static_assert(kEbuLatinFrom01.size() == 31);
constexpr std::u32string_view kEbuLatinFrom7B =
    U"«ů»ĽĦ"
    U"áàéèíìóòúùÑÇŞß¡Ÿ"
    U"âäêëîïôöûüñçşğıÿ"
    U"ĶŅ©ĢĞěňőŐ€£$ĀĒĪŪ"
    U"ķņĻģļİńűŰ¿ľ°āēīū"
    U"ÁÀÉÈÍÌÓÒÚÙŘČŠŽÐĿ"
    U"ÂÄÊËÎÏÔÖÛÜřčšžđŀ"
    U"ÃÅÆŒŷÝÕØÞŊŔĆŚŹŤð"
    U"ãåæœŵýõøþŋŕćśźťħ";
static_assert(kEbuLatinFrom7B.size() == 133);

using Table = std::array<char32_t, 256>;

Table Identity(char32_t end) {
  Table table{};
  for (char32_t c = 0; c < end; ++c) table[c] = c;
  return table;
}

void Place(Table& table, std::size_t from, std::u32string_view characters) {
  std::copy(characters.begin(), characters.end(), table.begin() + static_cast<std::ptrdiff_t>(from));
}

Table RdsTable() {
  Table table = Identity(0x7F);
  Place(table, 0x80, kRdsFrom80);
  table[0x24] = U'¤';
  table[0x5E] = U'\u2015';
  table[0x60] = U'\u2016';
  table[0x7E] = U'¯';
  return table;
}

Table EbuLatinTable() {
  Table table = Identity(0x7B);
  Place(table, 0x01, kEbuLatinFrom01);
  Place(table, 0x7B, kEbuLatinFrom7B);
  table[0x24] = U'ł';
  table[0x5C] = U'Ů';
  table[0x5E] = U'Ł';
  table[0x60] = U'Ą';
  return table;
}

// From characters to bytes. All the sets' characters lie below U+2200, so a flat table does.
class ReverseTable {
 public:
  explicit ReverseTable(const Table& table) {
    for (std::size_t byte = 1; byte < table.size(); ++byte)
      if (table[byte] != 0) Add(table[byte], static_cast<unsigned char>(byte));
  }
  // Another character with the same look.
  ReverseTable& Also(char32_t character, char32_t like) {
    if (const auto byte = Find(like)) Add(character, *byte);
    return *this;
  }
  std::optional<unsigned char> Find(char32_t character) const {
    if (character == 0) return static_cast<unsigned char>(0);
    if (character >= bytes_.size() || bytes_[character] == 0) return std::nullopt;
    return bytes_[character];
  }

 private:
  void Add(char32_t character, unsigned char byte) { bytes_[character] = byte; }
  std::array<unsigned char, 0x2200> bytes_{};
};

ReverseTable MakeReverse(CharacterSet set) {
  if (set == CharacterSet::kWindows1252) {
    Table table = Identity(0x100);
    Place(table, 0x80, kWindows1252Row8);
    return ReverseTable(table);
  }
  if (set == CharacterSet::kIso8859_1) return ReverseTable(Identity(0x100));
  // The capital of "đ" and that of "ð" look alike and share a place. A soft hyphen is where a word may break.
  if (set == CharacterSet::kRds)
    return ReverseTable(RdsTable()).Also(U'Đ', U'Ð').Also(U'β', U'ß').Also(U'μ', U'µ').Also(0xAD, 0x1F);
  return ReverseTable(EbuLatinTable()).Also(U'Đ', U'Ð').Also(0xAD, 0x1F);
}

}  // namespace

char32_t FromWindows1252(unsigned char byte) {
  return byte >= 0x80 && byte < 0xA0 ? kWindows1252Row8[byte - 0x80u] : byte;
}

std::optional<unsigned char> ByteFor(char32_t character, CharacterSet set) {
  static const ReverseTable windows1252 = MakeReverse(CharacterSet::kWindows1252);
  static const ReverseTable iso8859 = MakeReverse(CharacterSet::kIso8859_1);
  static const ReverseTable rds = MakeReverse(CharacterSet::kRds);
  static const ReverseTable ebuLatin = MakeReverse(CharacterSet::kEbuLatin);
  switch (set) {
    case CharacterSet::kWindows1252:
      return windows1252.Find(character);
    case CharacterSet::kIso8859_1:
      return iso8859.Find(character);
    case CharacterSet::kRds:
      return rds.Find(character);
    case CharacterSet::kEbuLatin:
      return ebuLatin.Find(character);
    case CharacterSet::kUtf8:
      break;
  }
  return std::nullopt;
}

}  // namespace zeb
