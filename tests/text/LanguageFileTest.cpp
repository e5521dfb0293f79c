#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "text/Encodings.h"
#include "text/LanguageFile.h"

namespace zeb {
namespace {

// Knows UTF-8 and Windows-1252 as itself; 932 is a page in which "!" belongs to no text.
std::optional<std::string> Decode(int codePage, std::string_view bytes) {
  if (codePage == 1252) return DecodeFile(bytes, {FileEncoding::kWindows1252, false, false});
  if (codePage == 932 && bytes.find('!') == std::string_view::npos) return std::string(bytes);
  return std::nullopt;
}

LanguageFile Read(std::string_view bytes) {
  return ReadLanguageFile(bytes, Decode);
}

TEST(LanguageFileTest, TextsAreFoundExactly) {
  const LanguageFile file = Read(
      "# German\r\n\r\nQuit=Beenden\r\nquit=beenden\nClose=Schlie\xC3\x9F"
      "en");
  EXPECT_TRUE(file.problems.empty());
  EXPECT_EQ(file.language.Translate("Quit"), "Beenden");
  EXPECT_EQ(file.language.Translate("quit"), "beenden");
  EXPECT_EQ(file.language.Translate("Close"), "Schließen");
  EXPECT_EQ(file.language.Translate("Open"), "Open");
  EXPECT_EQ(file.language.Translate(""), "");
}

TEST(LanguageFileTest, BytesAreThoseOfTheCodePage) {
  for (const char* first : {"CODEPAGE=1252\n", "\n# a comment\ncodepage=1252\r\n"})
    EXPECT_EQ(Read(std::string(first) + "Close=Schlie\xDF"
                                        "en")
                  .language.Translate("Close"),
              "Schließen");
  EXPECT_EQ(Read("CODEPAGE=1252\nClose=Schlie{DF}en").language.Translate("Close"), "Schließen");
  EXPECT_EQ(Read("Close=Schlie{C3}{9F}en").language.Translate("Close"), "Schließen");
  EXPECT_EQ(Read("\xEF\xBB\xBF"
                 "Close=Zu")
                .language.Translate("Close"),
            "Zu");
  EXPECT_EQ(Read(std::string_view("\xFF\xFE"
                                  "A\0=\0B\0\n\0",
                                  10))
                .language.Translate("A"),
            "B");
}

TEST(LanguageFileTest, EscapesStandForWhatALineCannotHold) {
  const LanguageFile file =
      Read("{23}1{3D}2{0A}End ={20}x{3D}y\nSong {live}=Lied {live}\nBraces {7B}41}=b\n");
  EXPECT_TRUE(file.problems.empty());
  EXPECT_EQ(file.language.Translate("#1=2\nEnd "), " x=y");
  EXPECT_EQ(file.language.Translate("Song {live}"), "Lied {live}");
  EXPECT_EQ(file.language.Translate("Braces {41}"), "b");
}

TEST(LanguageFileTest, WhatIsEscapedIsReadBack) {
  for (const char* text : {"a", " a ", "#a", "a=b", "{41}", "a\r\n\tb", "{", "ä{Ä}", "%1 has Control"}) {
    const LanguageFile file = Read(EscapeLanguageText(text) + "=" + EscapeLanguageText(text) + "!");
    EXPECT_TRUE(file.problems.empty()) << text;
    EXPECT_TRUE(file.language.Has(text)) << text;
    EXPECT_EQ(file.language.Translate(text), std::string(text) + "!");
  }
}

TEST(LanguageFileTest, TextsThatArePutTogetherAreFoundByTheirPattern) {
  const LanguageFile file = Read(
      "%1 has Control=Kontrolle: %1\n"
      "Port: %1=Anschluss %1\n"
      "There was a problem %1=Fehler %1\n"
      "There was a problem %1 and the description was \"%2\"=%2 (%1)\n"
      "loading=beim Laden\n"
      "%1%2 side by side=%1%2 x\n"
      "%1 a=%1 b\n");
  EXPECT_TRUE(file.problems.empty());
  const struct {
    const char *english, *translated;
  } cases[] = {
      {"Studio has Control", "Kontrolle: Studio"},
      {" has Control", "Kontrolle: "},
      {"Studio has Control!", "Studio has Control!"},
      {"Port: 3", "Anschluss 3"},
      {"Port:", "Port:"},
      {"There was a problem loading", "Fehler beim Laden"},
      {"There was a problem loading and the description was \"x\"", "x (beim Laden)"},
      {"There was a problem loading and the description was \"x",
       "Fehler loading and the description was \"x"},
      {"%1 has Control", "Kontrolle: %1"},
      {"12 side by side", "12 side by side"},  // nothing tells what is what
      {"just a", "just a"},                    // says too little to be a pattern
  };
  for (const auto& one : cases) EXPECT_EQ(file.language.Translate(one.english), one.translated);
}

TEST(LanguageFileTest, AWrongLineCostsItselfOnly) {
  struct Case {
    std::string line, problem;
  };
  std::vector<Case> cases = {
      {"no middle", "line 2: has no '=' between the English text and the translated one"},
      {"=nothing", "line 2: has no English text before its '='"},
      {"%1 files=Dateien", "line 2: does not have the same %1 on both sides of its '='"},
      {"Files=%1 Dateien", "line 2: does not have the same %1 on both sides of its '='"},
      {"Good=again", "line 2: its English text has stood in the file before"},
  };
  cases.emplace_back().line.assign(9000, 'x');
  cases.back().line += "=y";
  cases.back().problem = "line 2: has a text that is too long";
  cases.emplace_back().line.assign(40000, 'x');
  cases.back().problem = "line 2: is too long";
  for (const Case& one : cases) {
    const LanguageFile file = Read("Good=Gut\n" + one.line + "\nBad=Schlecht\n");
    ASSERT_EQ(file.problems.size(), 1u) << one.problem;
    EXPECT_EQ(file.problems[0], one.problem);
    EXPECT_EQ(file.language.Translate("Good"), "Gut");
    EXPECT_EQ(file.language.Translate("Bad"), "Schlecht");
  }
  EXPECT_EQ(Read("CODEPAGE=932\nA=!\nB=b").problems,
            std::vector<std::string>{"line 2: is not text in code page 932"});
  EXPECT_EQ(Read("CODEPAGE=932\nA={21}\nB=b").problems.size(), 1u);
}

TEST(LanguageFileTest, AnUnknownCodePageGivesNoTextsAtAll) {
  for (const char* page : {"1258", "0", "-1", "", "1252x", "99999999999999999999"}) {
    const LanguageFile file = Read(std::string("CODEPAGE=") + page + "\nA=B\n");
    EXPECT_EQ(file.language.Size(), 0u) << page;
    EXPECT_EQ(file.problems, std::vector<std::string>{std::string("line 1: the code page '") +
                                                      std::string(page).substr(0, 20) + "' is not known"});
  }
}

TEST(LanguageFileTest, TextsWithoutTranslationAreNamed) {
  const LanguageFile file = Read("A=\nB=b\n%1 c=\n");
  EXPECT_TRUE(file.problems.empty());
  EXPECT_EQ(file.untranslated, (std::vector<std::string>{"A", "%1 c"}));
  EXPECT_EQ(file.language.Translate("A"), "A");
}

TEST(LanguageFileTest, ShippedFilesAreReadWithoutAProblem) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(ZEB_SOURCE_DIR "/examples/Languages")) {
    std::ifstream stream(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    const LanguageFile file = Read(bytes);
    EXPECT_EQ(file.problems, std::vector<std::string>()) << entry.path();
    if (entry.path().filename() == "lang-template.txt") {
      EXPECT_EQ(file.language.Size(), 0u) << "a translator begins with nothing";
      EXPECT_GT(file.untranslated.size(), 100u);
    } else {
      EXPECT_GT(file.language.Size(), 5u) << entry.path();
    }
    ++files;
  }
  EXPECT_GE(files, 3);
}

TEST(LanguageFileTest, HostileFilesAreBounded) {
  std::string many;
  for (std::size_t i = 0; i < kMaxLanguageTexts + 5; ++i) many += "t" + std::to_string(i) + "=x\n";
  const LanguageFile full = Read(many);
  EXPECT_EQ(full.language.Size(), kMaxLanguageTexts);
  EXPECT_EQ(full.problems.size(), 1u);
  EXPECT_EQ(Read(std::string(kMaxLanguageFileBytes + 1, 'a')).problems.size(), 1u);
  std::string wrong;
  for (int i = 0; i < 1000; ++i) wrong += "x\n";
  EXPECT_EQ(Read(wrong).problems.size(), kMaxLanguageProblems);
  EXPECT_EQ(Read(std::string("A\0B=C\0D", 7)).language.Translate(std::string("A\0B", 3)),
            std::string("C\0D", 3));
}

}  // namespace
}  // namespace zeb
