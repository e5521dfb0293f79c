#include <gtest/gtest.h>

#include "text/Encodings.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

using namespace std::string_literals;

TEST(Encodings, DecodesLeniently) {
  EXPECT_EQ(DecodeLenient("Caf\xE9 caf\xC3\xA9 \x80\x93"), "Café café €“");
  EXPECT_EQ(DecodeLenient("\x81\x8D\x8F\x90\x9D"), "\u0081\u008D\u008F\u0090\u009D");
  EXPECT_EQ(DecodeLenient("\xC3"), "Ã");                 // cut off
  EXPECT_EQ(DecodeLenient("\xED\xA0\x80"), "í\u00A0€");  // half a surrogate pair is no sequence
  EXPECT_EQ(DecodeLenient("a\0b"s), "a\0b"s);
}

TEST(Encodings, DetectsFiles) {
  const struct {
    std::string bytes;
    FileEncoding::Kind kind;
    bool mark;
    bool markup;
  } cases[] = {
      {"", FileEncoding::kUtf8, false, false},
      {"now: <ZEB_NOW_ITEMNAME>", FileEncoding::kUtf8, false, false},
      {"a < b and b > c", FileEncoding::kUtf8, false, false},
      {"caf\xE9", FileEncoding::kWindows1252, false, false},
      {"café", FileEncoding::kUtf8, false, false},
      {"\xEF\xBB\xBF<html>", FileEncoding::kUtf8, true, true},
      {"\xFF\xFE<\0b\0>\0"s, FileEncoding::kUtf16LE, true, true},
      {"\xFE\xFF\0a"s, FileEncoding::kUtf16BE, true, false},
      {"<html><meta charset=\"iso-8859-1\">", FileEncoding::kIso8859_1, false, true},
      {"<META HTTP-EQUIV='Content-Type' CONTENT='text/html; CharSet = Windows-1252'>",
       FileEncoding::kWindows1252, false, true},
      {"<meta name=x><meta charset=latin1 />", FileEncoding::kIso8859_1, false, true},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a/>", FileEncoding::kIso8859_1, false, true},
      {"<?xml version=\"1.0\" encoding=\"koi8-r\"?><a>\xE9</a>", FileEncoding::kWindows1252, false, true},
      {"<meta charset=\"utf-8\">caf\xE9", FileEncoding::kUtf8, false, true},
      {"<meta charset=", FileEncoding::kUtf8, false, false},
  };
  for (const auto& c : cases) {
    const FileEncoding encoding = DetectFileEncoding(c.bytes);
    EXPECT_EQ(encoding.kind, c.kind) << c.bytes;
    EXPECT_EQ(encoding.byteOrderMark, c.mark) << c.bytes;
    EXPECT_EQ(encoding.markup, c.markup) << c.bytes;
  }
}

TEST(Encodings, DeclarationsAreLookedForAtTheStartOnly) {
  std::string bytes(4096, ' ');
  bytes += "<meta charset=\"iso-8859-1\">";
  EXPECT_EQ(DetectFileEncoding(bytes).kind, FileEncoding::kUtf8);
  EXPECT_EQ(DetectFileEncoding(bytes.substr(2048)).kind, FileEncoding::kIso8859_1);
}

TEST(Encodings, FilesKeepTheirEncoding) {
  const std::string files[] = {
      "\xEF\xBB\xBF"
      "café",
      "\xFF\xFE"
      "a\0=\xD8\0\xDE"s,
      "\xFE\xFF\0a\xD8=\xDE\0"s,
      "caf\xE9 \x80\x81\x93",
      "<meta charset=iso-8859-1>\xE9\xFF",
      "café"};
  for (const std::string& bytes : files) {
    const FileEncoding encoding = DetectFileEncoding(bytes);
    const std::string text = DecodeFile(bytes, encoding);
    EXPECT_TRUE(IsValidUtf8(text));
    EXPECT_FALSE(text.starts_with("\uFEFF"));
    EXPECT_EQ(EncodeFile(text, encoding), bytes);
    std::string room;
    EXPECT_EQ(EncodeFile(text, encoding, room), bytes);
  }
  EXPECT_EQ(DecodeFile("\xFF\xFE"
                       "a\0=\xD8\0\xDE"s,
                       {FileEncoding::kUtf16LE, true, false}),
            "a😀");
}

TEST(Encodings, BrokenFilesAreRead) {
  // Lone halves of pairs, before the end and at it, and half a unit.
  EXPECT_EQ(DecodeFile("\xFF\xFE\0\xD8"
                       "a\0\0\xDC"s,
                       {FileEncoding::kUtf16LE, true, false}),
            "\uFFFDa\uFFFD");
  EXPECT_EQ(DecodeFile("\xFE\xFF\xD8\x3D"s, {FileEncoding::kUtf16BE, true, false}), "\uFFFD");
  EXPECT_EQ(DecodeFile("\xFE\xFF\0"s, {FileEncoding::kUtf16BE, true, false}), "\uFFFD");
  EXPECT_EQ(DecodeFile("<meta charset=utf-8>\xE9é", {FileEncoding::kUtf8, false, true}),
            "<meta charset=utf-8>éé");
  EXPECT_EQ(DecodeFile("\x93q\x94", {FileEncoding::kIso8859_1, false, true}), "“q”");
}

TEST(Encodings, CharactersThatAFileLacks) {
  EXPECT_EQ(EncodeFile("ł€😀", {FileEncoding::kWindows1252, false, true}), "&#322;\x80&#128512;");
  EXPECT_EQ(EncodeFile("ł€", {FileEncoding::kWindows1252, false, false}), "?\x80");
  EXPECT_EQ(EncodeFile("€é", {FileEncoding::kIso8859_1, false, true}), "&#8364;\xE9");
  EXPECT_EQ(EncodeFile("\u0080", {FileEncoding::kWindows1252, false, true}), "?");
}

TEST(CharacterSets, Names) {
  for (const auto set : {CharacterSet::kUtf8, CharacterSet::kWindows1252, CharacterSet::kIso8859_1,
                         CharacterSet::kRds, CharacterSet::kEbuLatin})
    EXPECT_EQ(CharacterSetByName(CharacterSetName(set), CharacterSet::kUtf8), set);
  EXPECT_EQ(CharacterSetByName("ebu latin", CharacterSet::kUtf8), CharacterSet::kEbuLatin);
  EXPECT_EQ(CharacterSetByName("", CharacterSet::kRds), CharacterSet::kRds);
}

TEST(CharacterSets, TablesAtTheirEdges) {
  const struct {
    const char* text;
    const char* rds;
    const char* ebuLatin;
  } cases[] = {
      {"Az09 '\"", "Az09 '\"", "Az09 '\""},
      {"áßÑ", "\x80\x8D\x8A", "\x80\x8D\x8A"},
      {"$£€", "\xAB\xAA\xA9", "\xAB\xAA\xA9"},
      {"ÿŸ", "yY", "\x9F\x8F"},
      {"łŁ", "lL", "\x24\x5E"},
      {"ąĄęĘ", "aAeE", "\x10\x60\x11\x01"},
      {"¤―‖¯", "\x24\x5E\x60\x7E", "?-/ "},
      {"←↑→↓", "\xAC\xAD\xAE\xAF", "????"},
      {"űőŐŰ", "\xB7\xA7OU", "\xB7\xA7\xA8\xB8"},
      {"ŧťħź", "\xFEth\xFD", "t\xFE\xFF\xFD"},
      {"ĐÐđ", "\xCE\xCE\xDE", "\xCE\xCE\xDE"},
      {"[\\]{|}", "[\\]{|}", "[/](/)"},
      {"a\nb", "a\nb", "a\nb"},
      {"\t\r", "\t\r", "  "},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(EncodeFor(c.text, CharacterSet::kRds), c.rds) << c.text;
    EXPECT_EQ(EncodeFor(c.text, CharacterSet::kEbuLatin), c.ebuLatin) << c.text;
  }
}

TEST(CharacterSets, TransliteratesToOneCharacter) {
  const struct {
    const char* text;
    const char* iso;
  } cases[] = {
      {"‘a’ “b” – — …", "'a' \"b\" - - ."},
      {"ł ø đ æ œ ß", "l \xF8 d \xE6 o \xDF"},
      {"ế Ǿ Ș", "e \xD8 S"},
      {"e\u0301 x\u0301", "\xE9 x"},  // a mark apart from its letter
      {"日本 Ж", "?? ?"},
      {"½ ⅓", "\xBD ?"},
      {"Ａ４", "A4"},
      {"😀\uFE0F", "?"},
      {"a\u200Db", "ab"},
      {"€", "E"},
  };
  for (const auto& c : cases) EXPECT_EQ(EncodeFor(c.text, CharacterSet::kIso8859_1), c.iso) << c.text;
  EXPECT_EQ(EncodeFor("e\u0301😀", CharacterSet::kUtf8), "e\u0301😀");
  EXPECT_EQ(EncodeFor("’€™", CharacterSet::kWindows1252), "\x92\x80\x99");
}

// A byte 0 would end the text for many receivers.
TEST(CharacterSets, NoOtherCharacterBecomesAZeroByte) {
  for (const auto set :
       {CharacterSet::kWindows1252, CharacterSet::kIso8859_1, CharacterSet::kRds, CharacterSet::kEbuLatin}) {
    for (char32_t c = 1; c < 0x30000; ++c) {
      if (c >= 0xD800 && c < 0xE000) continue;
      std::string text;
      AppendCharacter(text, c);
      const std::string bytes = EncodeFor(text, set);
      ASSERT_LE(bytes.size(), CountCharacters(text) * 3) << std::hex << static_cast<unsigned>(c);
      ASSERT_EQ(bytes.find('\0'), std::string::npos) << std::hex << static_cast<unsigned>(c);
    }
  }
}

}  // namespace
}  // namespace zeb
