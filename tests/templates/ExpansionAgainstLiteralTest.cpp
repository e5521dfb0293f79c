// The fast expansion against the literal one, over texts made of the language's own pieces: they meet every
// unlikely neighbourhood within a few thousand tries.
#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "templates/CompiledTemplate.h"
#include "templates/PageChunks.h"
#include "tests/templates/LiteralExpansion.h"
#include "tests/templates/StationFixture.h"

namespace zeb {
namespace {

class RandomTexts {
 public:
  std::string Next() {
    static const std::vector<std::string> kPieces = {"[",
                                                     "]",
                                                     "(",
                                                     ")",
                                                     "<",
                                                     ">",
                                                     "=",
                                                     "!=",
                                                     "_",
                                                     "é",
                                                     "€",
                                                     "x",
                                                     " ",
                                                     "<ZEB",
                                                     "<ZEB_",
                                                     "[(<ZEB_",
                                                     "NOW_",
                                                     "NEXT2",
                                                     "PREV3_",
                                                     "COMING_",
                                                     "SPECIAL",
                                                     "SIMPLETEXT",
                                                     "ARTISTS",
                                                     "ITEMTYPE",
                                                     "SHOWREFERENCE",
                                                     "PICTUREFILENAME",
                                                     "_2",
                                                     "Song",
                                                     "42",
                                                     "ABBA",
                                                     "<ZEB_NOW_ITEMNAME>",
                                                     "[(<ZEB_NOW_ARTISTS>!=)",
                                                     "[(<ZEB_NEXT_ITEMTYPE>=Link)",
                                                     "<b>",
                                                     "[["};
    // A few pieces at a time, so that each comes often.
    const std::size_t variety = 2 + Below(8);
    std::vector<std::string> chosen;
    for (std::size_t i = 0; i < variety; ++i) chosen.push_back(kPieces[Below(kPieces.size())]);
    std::string text;
    for (std::size_t i = Below(24); i > 0; --i) text += chosen[Below(chosen.size())];
    return text;
  }
  std::size_t Below(std::size_t limit) { return random_() % limit; }

 private:
  std::mt19937 random_{20260302};
};

CompiledTemplate::Text Shared(std::string text) {
  return std::make_shared<const std::string>(std::move(text));
}

TEST(ExpansionAgainstLiteral, Templates) {
  Station station;
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  RandomTexts texts;
  for (int i = 0; i < 60000; ++i) {
    const std::string text = texts.Next(), simple = texts.Next();
    const ValueEncoding values{i % 4 == 0};
    UploadFileList expectedFiles;
    const std::string expected = literal::Expand(text, station.service, simple, expectedFiles, values);
    ASSERT_EQ(station.Expand(text, simple, values), expected) << text;
    ASSERT_EQ(station.uploads.Paths(), expectedFiles.Paths()) << text;
    UploadFileList files;
    ASSERT_EQ(CompiledTemplate::OfText(Shared(text))->Expand(*snapshot, simple, files, values), expected)
        << text;
    ASSERT_EQ(files.Paths(), expectedFiles.Paths()) << text;
  }
}

TEST(ExpansionAgainstLiteral, PagesInPieces) {
  Station station;
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  RandomTexts texts;
  for (int i = 0; i < 40000; ++i) {
    const std::string page = texts.Next() + texts.Next();
    const std::size_t characters = 2 + texts.Below(40);
    UploadFileList files;
    std::string pieces;
    for (std::size_t from = 0; from < page.size();) {
      const std::size_t end = ChunkEnd(page, from, characters);
      pieces += ExpandTemplate(page.substr(from, end - from), station.service, "s", files);
      from = end;
    }
    ASSERT_EQ(pieces, literal::ExpandPage(page, station.service, "s", files, characters))
        << characters << ": " << page;
    const auto compiled = CompiledTemplate::OfPage(Shared(page), {}, characters);
    ASSERT_EQ(compiled->Expand(*snapshot, "s", files), pieces) << characters << ": " << page;
  }
}

// Compiled with another header of the same length.
TEST(ExpansionAgainstLiteral, PagesWithAHeader) {
  Station station;
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  RandomTexts texts;
  const std::string first = "<!-- May -->\r\n<meta>\r\n", now = "<!-- é\"€ -->\r\n<meta>\r\n";
  int headersAlone = 0;
  for (int i = 0; i < 40000; ++i) {
    const std::string before = texts.Next() + "\r\n", after = texts.Next();
    const std::size_t characters = 2 + texts.Below(60);
    const auto compiled =
        CompiledTemplate::OfPage(Shared(before + after), {before.size(), first}, characters);
    UploadFileList files;
    ASSERT_EQ(compiled->Expand(*snapshot, "s", files, {}, now),
              literal::ExpandPage(before + now + after, station.service, "s", files, characters))
        << characters << ": " << before << "|" << after;
    headersAlone += CompilePage(before + after, {before.size(), first}, characters) ? 1 : 0;
  }
  EXPECT_GT(headersAlone, 20000);
}

// What people write is compiled, whatever the header and the pieces.
TEST(ExpansionAgainstLiteral, OrdinaryPagesNeedNoGeneralExpansion) {
  const std::string page =
      "<html>\r\n<a href=\"[(<ZEB_NEXT_ARTISTS>!=)<ZEB_NEXT_ITEMHREF>]\">x < 1; i<<2; a[0][1]</a> [[\r\n"
      "[(<ZEB_NOW_ITEMTYPE>=Song)<b><ZEB_NOW_ITEMNAME></b> [plain <i>]][(<ZEB_SPECIAL_SHOWTITLE>!=)!]\r\n"
      "<ZEB_FOO_BAR> é <ZEB_NOW_PICTUREFILENAME_2> <ZEB_NOW_ITEMNAME><<ZEB_NOW_ITEMNAME>";
  for (std::size_t characters = 100; characters < 300; ++characters) {
    const std::optional<TemplateProgram> program = CompilePage(page, {8, "<!-- header -->\r\n"}, characters);
    ASSERT_TRUE(program);
    EXPECT_EQ(program->names.size(), 5u);
    for (const TemplateStep& step : program->steps) EXPECT_NE(step.kind, TemplateStep::kPiece) << step.text;
  }
}

std::string Repeated(std::string_view piece, std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += piece;
  return text;
}

// Each of these makes an expansion that looks twice at what it has seen take minutes.
TEST(Expansion, HostileTextsTakeLinearTime) {
  Station station;
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  const std::vector<std::string> ends = {"", "]>"};
  for (const char* piece :
       {"[", "[(<ZEB", "<ZEB", "<", "[x", "<ZEB_NOW_", "[(<ZEB_NOW_ARTISTS>=", "[a]<ZEB_FOO", "]<ZEB>[(<ZEB",
        "<ZEB]", "[(<ZEB>", "&lt;ZEB_", "%3cZEB_", "&%", "<ZEB_NOW_ARTISTS>"})
    for (const std::string& end : ends) {
      const std::string text = Repeated(piece, 1 << 20) + end;
      const auto start = std::chrono::steady_clock::now();
      UploadFileList files;
      station.Expand(text);
      const std::string page = UndoEscapedTags(text);
      ExpandPage(page, *snapshot, "", files);
      CompiledTemplate::OfPage(Shared(page))->Expand(*snapshot, "", files);
      // Far above what it takes, also under the sanitizers, and far below the quadratic way.
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << piece << end;
    }
}

}  // namespace
}  // namespace zeb
