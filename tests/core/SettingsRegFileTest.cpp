#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/RegFile.h"
#include "platform/simulated/MemoryHive.h"

namespace zeb {
namespace {

const std::string kHead = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string kKey = "Software\\Hexmoor\\Z";
const std::string kInKey = kHead + "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\Z]\r\n";  // line 3

std::string Utf16(const std::string& ascii) {
  std::string bytes = "\xFF\xFE";
  for (char c : ascii) bytes += {c, '\0'};
  return bytes;
}

TEST(RegFile, ReadsEveryKindOfValue) {
  struct Case {
    std::string line;
    SettingsData data;
  };
  const std::vector<Case> cases = {
      {R"("v"="plain")", "plain"},
      {R"("V" = "a \"b\" \\c" ; comment)", R"(a "b" \c)"},
      {R"("v"="C:\temp;x")", R"(C:\temp;x)"},
      {"\"v\"=\"one\r\ntwo\nthree\"", "one\r\ntwo\nthree"},
      {"\"v\"=\"\xC3\xA9\"", "\xC3\xA9"},
      {"\"v\"=\"\xE9\"", "\xC3\xA9"},
      {R"("v"=dword:ffffffff)", 0xFFFFFFFFu},
      {R"("v"=DWORD:1f)", 0x1Fu},
      {"\"v\"=hex(2):25,00,\\\r\n  e9,00,\\\n 00,00", "%\xC3\xA9"},
      {R"("v"=hex(1):3d,d8,00,de,00,00)", "\xF0\x9F\x98\x80"},
      {R"("v"=hex(7):61,00,00,00,62,00,00,00,00,00)", "a\nb"},
      {R"("v"=hex(4):04,03,02,01)", 0x01020304u},
      {R"("v"=hex(1):)", ""},
  };
  for (const Case& given : cases) {
    MemoryHive hive;
    const auto summary = ImportRegFile(hive, kInKey + given.line);
    ASSERT_TRUE(summary.Ok()) << given.line << ": " << summary.Reason();
    ASSERT_EQ(hive.Values(kKey).size(), 1u) << given.line;
    EXPECT_EQ(hive.Values(kKey)[0].data, given.data) << given.line;
  }
}

TEST(RegFile, ReadsTheEncodingsOfBothVersions) {
  const std::string body = "\r\n[HKLM\\SOFTWARE\\Wow6432Node\\Hexmoor\\Z]\r\n\"v\"=\"x\"\r\n";
  const std::string ansi =
      "REGEDIT4\r\n[HKLM\\Software\\Hexmoor\\Z]\r\n\"v\"=\"\x80 <meta charset=utf-8>\"\r\n"
      "\"w\"=hex(2):80,00\r\n";
  for (const std::string& file :
       {kHead + body, "\xEF\xBB\xBF" + kHead + body, Utf16(kHead + body), "REGEDIT4\n" + body}) {
    MemoryHive hive;
    ASSERT_TRUE(ImportRegFile(hive, file).Ok());
    EXPECT_EQ(hive.ReadText(kKey, "v", ""), "x");
  }
  MemoryHive hive;
  ASSERT_TRUE(ImportRegFile(hive, ansi).Ok());
  EXPECT_EQ(hive.ReadText(kKey, "v", ""), "\xE2\x82\xAC <meta charset=utf-8>");
  EXPECT_EQ(hive.ReadText(kKey, "w", ""), "\xE2\x82\xAC");
}

TEST(RegFile, ErrorsNameTheLineAndLeaveTheStoreAlone) {
  struct Case {
    std::string file, message;
  };
  const std::string longText(kMaxSettingsTextBytes + 1, 'x');
  const std::vector<Case> cases = {
      {"", "line 1: this is not a .reg file"},
      {"\xEF\xBB\xBF\r\n[HKLM\\a]\r\n", "line 2: this is not a .reg file"},
      {kHead + "\"v\"=\"1\"", "line 3: a value before the first key"},
      {kHead + "[HKLM\\a\r\n", "line 3: the key's closing ]"},
      {kHead + "[HKXX\\a]\r\n", "line 3: there is no hive 'HKXX'"},
      {kHead + "[-HKLM]\r\n", "line 3: the whole hive"},
      {kHead + "[-HKLM\\a]\r\n\"v\"=\"1\"", "line 4: a value in a key that is deleted"},
      {kHead + "[HKLM\\a\tb]\r\n", "line 3: settings key 'a?b' holds a control character"},
      {kInKey + "\"v\"=\"1\r\n2\"\r\n\"w\"=\"open\r\n\r\n", "line 6: the closing double quote"},
      {kInKey + "\"v\"\"1\"", "line 4: = is missing"},
      {kInKey + "\"v\"=dword:123456789", "line 4: dword: needs"},
      {kInKey + "\"v\"=dword:", "line 4: dword: needs"},
      {kInKey + "\"v\"=\"1\" x", "line 4: unexpected 'x'"},
      {kInKey + "\"v\"=hex(1):61,00,\\\r\n62,\\ x", "line 5: \\ must be the last"},
      {kInKey + "\"v\"=hex(1):61,00,\\", "line 4: \\ must be the last"},
      {kInKey + "\"v\"=hex(1):61", "line 4: text given as bytes"},
      {kInKey + "\"v\"=hex:01,\\\r\n  02\r\n", "line 4: value 'v' has the type hex, which"},
      {kInKey + "@=hex(b):00,00,00,00,00,00,00,00", "line 4: the default value has the type hex(b)"},
      {kInKey + "\"v\"=hex(4):01,02", "line 4: value 'v' has the type hex(4)"},
      {kInKey + "\"v\"=hex(7:01", "line 4: ) is missing"},
      {kInKey + "\"v\"=word", "line 4: a value must be"},
      {kInKey + "v=1", "line 4: 'v=1' is neither"},
      {kInKey + "\"v\"=\"" + longText + "\"\r\n", "line 4: value 'v' in settings key"},
      {Utf16(kInKey) + "\"v\"", "line 4: "},
  };
  for (const Case& given : cases) {
    MemoryHive hive;
    hive.WriteText(kKey, "v", "old");
    const auto summary = ImportRegFile(hive, given.file);
    ASSERT_FALSE(summary.Ok()) << given.message;
    EXPECT_EQ(summary.Reason().substr(0, given.message.size()), given.message);
    EXPECT_EQ(summary.Reason().find('\n'), std::string::npos);
    EXPECT_EQ(hive.ReadText(kKey, "v", ""), "old") << given.message;
  }
}

TEST(RegFile, DeletesInTheFilesOrderAndCountsWhatItSkips) {
  MemoryHive hive;
  hive.WriteText(kKey, "gone", "1");
  hive.WriteText(kKey + "\\Below", "v", "1");
  const auto summary = ImportRegFile(hive, kHead +
                                               "[-HKLM\\Software\\Hexmoor\\Z\\Below]\r\n"
                                               "[HKLM\\Software\\Hexmoor\\Z\\Below]\r\n\"new\"=\"1\"\r\n"
                                               "[HKLM\\Software\\Hexmoor\\Z]\r\n\"GONE\"=-\r\n"
                                               "[HKEY_CURRENT_USER\\x]\r\n\"v\"=hex:01\r\n"
                                               "[HKLM\\Software\\Hexmoorish]\r\n\"v\"=hex:01\r\n");
  ASSERT_TRUE(summary.Ok()) << summary.Reason();
  EXPECT_FALSE(hive.HasValue(kKey, "gone"));
  EXPECT_FALSE(hive.HasValue(kKey + "\\Below", "v"));
  EXPECT_TRUE(hive.HasValue(kKey + "\\Below", "new"));
  EXPECT_EQ(summary.Value().Text(),
            "1 value imported, 2 deletions, 1 key of other hives skipped, 1 value of other programs and of "
            "types not known here skipped");
}

TEST(RegFile, WhatIsExportedReadsBackExactly) {
  MemoryHive hive;
  const std::vector<std::string> texts = {"",
                                          "\"",
                                          "\\",
                                          "\\\"",
                                          "a\r\nb",
                                          "a\nb\r",
                                          "\r",
                                          "[HKLM\\x]\n\"y\"=\"z\"",
                                          std::string("n\0l\0", 4),
                                          "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80" + std::string(30, '\0'),
                                          "; not a comment",
                                          "\xEF\xBB\xBFmark",
                                          std::string("\xEF\xBB\xBF\0", 4)};
  for (const std::string& text : texts) hive.WriteText(kKey, "n" + text, text);
  hive.WriteText(kKey + "\\a]b; \xC3\x89", "", "default");
  hive.WriteNumber(kKey + "\\a]b; \xC3\x89\\c", "n", -1);
  hive.CreateKey(kKey + "\\empty");
  const std::string file = ExportRegFile(hive, kKey);
  MemoryHive copy;
  const auto summary = ImportRegFile(copy, file);
  ASSERT_TRUE(summary.Ok()) << summary.Reason();
  EXPECT_EQ(ExportRegFile(copy, kKey), file);
  for (const std::string& text : texts) EXPECT_EQ(copy.ReadText(kKey, "n" + text, "?"), text);
  EXPECT_EQ(copy.ReadText(kKey + "\\A]B; \xC3\xA9", "", "?"), "default");
  EXPECT_EQ(copy.ReadNumber(kKey + "\\a]b; \xC3\x89\\c", "n", 0), -1);
  EXPECT_TRUE(copy.KeyExists(kKey + "\\empty"));
}

TEST(RegFile, ExportIsWhatARegistryEditorWrites) {
  MemoryHive hive;
  hive.WriteText("Software\\Hexmoor", "b", "x\"\\");
  hive.WriteNumber("Software\\Hexmoor", "A", 26);
  hive.WriteText("Software\\Hexmoor", "", "d");
  EXPECT_EQ(ExportRegFile(hive, "Software\\Hexmoor"),
            "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Hexmoor]\r\n"
            "@=\"d\"\r\n\"A\"=dword:0000001a\r\n\"b\"=\"x\\\"\\\\\"\r\n\r\n");
}

}  // namespace
}  // namespace zeb
