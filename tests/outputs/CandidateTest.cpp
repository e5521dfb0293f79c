// Which text is sent: alternates and schedule files.
#include <map>

#include "outputs/wire/CandidateChooser.h"
#include "outputs/wire/ScheduleFile.h"
#include "outputs/wire/WireCharacters.h"
#include "tests/outputs/WireFixture.h"
#include "text/Encodings.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

WallTime At(int day, int hour) {  // day 2 of March 2026 is a Monday
  return std::chrono::local_days(std::chrono::year(2026) / 3 / day) + std::chrono::hours(hour) + 59min;
}

TEST(ScheduleFile, DaysAndHoursDecide) {
  struct Case {
    std::string line;
    int day, hour;
    bool matches;
  };
  const Case cases[] = {
      {"SaSu|6-9|x", 7, 6, true},         {"SaSu|6-9|x", 8, 9, true},
      {"SaSu|6-9|x", 7, 10, false},       {"SaSu|6-9|x", 7, 5, false},
      {"SaSu|6-9|x", 6, 7, false},        {"MoTuWeThFr|0-23|x", 2, 0, true},
      {"MoTuWeThFr|0-23|x", 6, 23, true}, {"MoTuWeThFr|0-23|x", 7, 12, false},
      {"Monday|12|x", 2, 12, true},       {"Monday|12|x", 2, 13, false},
      {"mo|12|x", 2, 12, false},          {"Saturday|12|x", 3, 12, false},  // it holds "tu", not "Tu"
      {"Mo|22-3|x", 2, 23, false},        {"Mo| 9 - 12 |x", 2, 12, true},
  };
  for (const Case& c : cases) {
    const ScheduleFile file = ScheduleFile::Parse(c.line);
    ASSERT_EQ(file.entries.size(), 1u) << c.line;
    EXPECT_EQ(file.entries[0].Matches(At(c.day, c.hour)), c.matches)
        << c.line << ' ' << c.day << ' ' << c.hour;
  }
}

TEST(ScheduleFile, SkipsWhatItCannotReadAndSaysWhere) {
  const ScheduleFile file =
      ScheduleFile::Parse("Mo|1|  one \r\n\r\rTu|2|two|more\nbroken\nWe|25-3|x\nWe|x|y\nTh|1-|z\nFr|1|\n");
  ASSERT_EQ(file.entries.size(), 3u);
  EXPECT_EQ(file.entries[0].templateText, "one");
  EXPECT_EQ(file.entries[1].templateText, "two");
  EXPECT_EQ(file.malformedLines, (std::vector<int>{5, 6, 7, 8}));
  EXPECT_TRUE(ScheduleFile::Parse("").entries.empty());
}

TEST(ScheduleFile, ReadsEveryEncodingAndHasABound) {
  const std::string utf8 = "Mo|1|Ørsund\r\n";
  for (const FileEncoding::Kind kind :
       {FileEncoding::kUtf8, FileEncoding::kUtf16LE, FileEncoding::kUtf16BE, FileEncoding::kWindows1252}) {
    const bool mark = kind != FileEncoding::kWindows1252;
    const ScheduleFile file = ScheduleFile::Parse(EncodeFile(utf8, {kind, mark, false}));
    ASSERT_EQ(file.entries.size(), 1u);
    EXPECT_EQ(file.entries[0].days, "Mo");
    EXPECT_EQ(file.entries[0].templateText, "Ørsund");
  }
  std::string many;
  for (int i = 0; i < 20000; ++i) many += "Mo|1|x\n";
  EXPECT_EQ(ScheduleFile::Parse(many).entries.size(), kMaxScheduleEntries);
}

class CandidateTest : public WireTest {
 protected:
  Lines Candidates(const WireFormats& formats, LineBreaks breaks = LineBreaks::kKept) {
    Lines all;
    EXPECT_TRUE(t.loop.RunTask([&] {
      const auto found = chooser.Candidates(formats, *Snapshot(), breaks);
      problem = found ? "" : found.Reason();
      if (found) all = found.Value();
    }));
    return all;
  }
  WorkLane lane{t.loop};
  CandidateChooser chooser{t.environment, lane};
  std::string problem;
};

TEST_F(CandidateTest, AlternatesAreLookedAtWhenTheMainTextIsEmptyOrAlways) {
  const std::string main = "<ZEB_NOW_ITEMNAME>";
  EXPECT_EQ(Candidates({main, "", "a|b", true}), (Lines{"Rain on Slate"}));
  EXPECT_EQ(Candidates({main, "", "a||<ZEB_NOW_ITEMNAME>!|b", false}),
            (Lines{"Rain on Slate", "a", "Rain on Slate!", "b"}));
  EXPECT_EQ(Candidates({"", "", "a|b", true}), (Lines{"a", "b"}));
  EXPECT_EQ(Candidates({"", "", "", true}), Lines{});
  EXPECT_EQ(Candidates({"a\r\nb", "", "", true}, LineBreaks::kTakenOut), (Lines{"ab"}));
  EXPECT_EQ(Candidates({"\r\n", "", "c\n", true}, LineBreaks::kTakenOut),
            (Lines{"c"}));  // only breaks: empty
}

TEST_F(CandidateTest, ScheduleFilesGiveTheEntriesOfNow) {
  t.files.Put("/data/a.txt", "Mo|12|<ZEB_NOW_ITEMNAME>\nMo|13|no\nTu|12|no\nMoTu|0-23|two\nbad\n");
  t.files.Put("/else/b.txt", "Mo|12|three");
  const WireFormats formats{"", "", "file:a.txt|FILE:/else/b.txt|FILE:none.txt|plain", true};
  EXPECT_EQ(Candidates(formats), (Lines{"Rain on Slate", "two", "three", "plain"}));
  Candidates(formats);
  Log();
  EXPECT_EQ(journal, (Lines{"'/data/a.txt': skipping line 5, which should read days|hours|template"}));
  // Looked up anew each time, on the loop's clock.
  t.files.Put("/data/a.txt", "Mo|12|four");
  EXPECT_EQ(Candidates(formats), (Lines{"four", "three", "plain"}));
  t.loop.RunFor(1h);
  EXPECT_EQ(Candidates(formats), (Lines{"plain"}));
  t.files.PutSpecial("/data/a.txt");
  EXPECT_EQ(Candidates(formats), (Lines{"plain"}));
}

TEST_F(CandidateTest, AllCandidatesShowTheMomentOfTheSnapshot) {
  t.files.Put("/data/a.txt", "Mo|12|<ZEB_NOW_ITEMNAME>");
  t.loop.SetBlockingTime(5s);
  const Timer next = t.loop.After(2s, [&] { Play("Next"); });
  EXPECT_EQ(Candidates({"<ZEB_NOW_ITEMNAME>", "", "FILE:a.txt", false}),
            (Lines{"Rain on Slate", "Rain on Slate"}));
}

// On a share that hangs, the file's name must not go out as a text, and one worker is enough.
TEST_F(CandidateTest, AFileThatDoesNotAnswerIsTheReason) {
  t.files.Put("/data/a.txt", "Mo|12|one");
  bool back = false;
  t.files.fail = [&](const std::string& operation, const std::string&) -> std::string {
    if (operation == "Read") t.loop.WaitUntil([&] { return back; }, 1h);
    return {};
  };
  const WireFormats formats{"", "", "FILE:a.txt", true};
  const MonotonicTime start = t.loop.Monotonic();
  EXPECT_EQ(Candidates(formats), Lines{});
  EXPECT_EQ(t.loop.Monotonic() - start, 30s);
  EXPECT_EQ(problem, "the schedule file '/data/a.txt' does not answer; check the share it lies on");
  EXPECT_TRUE(lane.Hangs());
  EXPECT_EQ(Candidates(formats), Lines{});
  EXPECT_EQ(t.loop.Monotonic() - start, 30s);
  back = true;
  t.loop.RunPosted();
  EXPECT_FALSE(lane.Hangs());
  EXPECT_EQ(Candidates(formats), (Lines{"one"}));
}

TEST_F(CandidateTest, EveryCandidateIsPickedInTime) {
  const Lines all = {"a", "b", "c"};
  std::map<std::string, int> picks;
  for (int i = 0; i < 3000; ++i) ++picks[chooser.Pick(all)];
  for (const std::string& one : all) EXPECT_GT(picks[one], 800) << one;
  EXPECT_EQ(chooser.Pick({}), "");
}

TEST(WireCharacters, KeepToSetWritesWhatTheSetLacksAsItsLook) {
  EXPECT_EQ(KeepToSet("Łódź €5 ok $ 日", CharacterSet::kUtf8), "Łódź €5 ok $ 日");
  EXPECT_EQ(KeepToSet("Łódź ok", CharacterSet::kEbuLatin), "Łódź ok");
  EXPECT_EQ(KeepToSet("日", CharacterSet::kEbuLatin), "?");
  EXPECT_EQ(KeepToSet("Łódź", CharacterSet::kWindows1252), "Lódz");
}

}  // namespace
}  // namespace zeb
