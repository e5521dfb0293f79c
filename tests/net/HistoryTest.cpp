// The history of a real zebd: what it tells afterwards is what came in and what was published, however zebd
// ended.

#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "platform/common/SqliteHistoryReader.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

const std::string kPage =
    "Now: <ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>\nAt <ZEB_SPECIAL_CURRENTDATETIMEXML>\n";

std::string Current(const std::string& title, const std::string& more = "") {
  return "SET_CURRENT_ITEM IType=7 ITitle=\"" + title + "\" AName1=\"Ada Quill\"" + more;
}

class HistoryTest : public Station {
 protected:
  // What the command prints, once it prints `text`; zebd writes its history within about a second.
  std::string Await(const std::vector<std::string>& command, const std::string& text) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (;;) {
      const Finished asked = Zebctl(command);
      if (asked.output.find(text) != std::string::npos || std::chrono::steady_clock::now() > end)
        return asked.output + asked.error;
    }
  }
  std::string Ask(const std::string& question) const {
    sqlite3* database = nullptr;
    sqlite3_open_v2(Path("history.db").c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    std::string answer;
    sqlite3_exec(
        database, question.c_str(),
        [](void* to, int, char** values, char**) {
          *static_cast<std::string*>(to) += values[0] != nullptr ? values[0] : "NULL";
          return 0;
        },
        &answer, nullptr);
    sqlite3_close(database);
    return answer;
  }
};

// The first line of a listing that holds the text.
std::string LineWith(const std::string& listing, const std::string& text) {
  const std::size_t at = listing.find(text);
  if (at == std::string::npos) return "";
  const std::size_t begin = listing.rfind('\n', at) + 1;
  return listing.substr(begin, listing.find('\n', at) - begin);
}

TEST_F(HistoryTest, TellsWhatWasOnAirAndWhyWhileZebdRunsAndAfterwards) {
  AddService(1, control, kPage, "now.txt");
  const Finished none = Zebctl({"history"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.error, "zebctl: there is no history yet: '" + Path("history.db") + "' does not exist\n");
  Start();
  ASSERT_EQ(Send({"--name", "Studio 1",
                  Current("First", " CMDur=215 RecLabel=Tidal Composer=\"J. Wren\" RecNo=TID-17")})
                .status,
            0);
  AwaitPage("now.txt", "First");
  ASSERT_EQ(Send({"--name", "Studio 1", Current("Second")}).status, 0);
  const std::string page = AwaitPage("now.txt", "Second");

  const std::string listing = Await({"history", "--output", "file1"}, "Second");
  EXPECT_EQ(LineWith(listing, "First").find("  1        File1         now.txt: "), 19u) << listing;
  const std::string items = Zebctl({"history"}).output;
  EXPECT_NE(LineWith(items, "current       First")
                .find("First - Ada Quill (port " + std::to_string(6900 + control) + ", Studio 1)"),
            std::string::npos)
      << items;

  zebd->Signal(SIGTERM);
  ASSERT_EQ(zebd->Wait(), 0) << zebd->error;
  const Finished told = Zebctl({"why", "1", "file1", "2100-01-01 00:00"});
  EXPECT_EQ(told.status, 0) << told.error;
  // The digest is that of the very bytes that are in the file.
  const Finished digest = RunProgram({"/usr/bin/sha256sum"}, page);
  for (const std::string& part : {"SHA-256 " + digest.output.substr(0, 64) + "\n",
                                  std::string("  begins    Now: Second by Ada Quill\n"),
                                  std::string("  item      Second - Ada Quill (Song)\n"),
                                  std::string("  template  Now: <ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>\n"),
                                  std::string("  expanded  Now: Second by Ada Quill\n            At "),
                                  std::string(", Studio 1\n"), std::string("  left      not yet\n")})
    EXPECT_NE(told.output.find(part), std::string::npos) << part << " in:\n" << told.output;
  EXPECT_EQ(told.output.find("First"), std::string::npos) << told.output;

  EXPECT_EQ(Zebctl({"why", "1", "Web1", "2100-01-01 00:00"}).error,
            "zebctl: the history knows no output Web1 of service 1; it knows File1\n");
  const std::string songs = Zebctl({"history", "--songs", "--csv"}).output;
  EXPECT_NE(songs.find("start,length,service,title,artists,label,composer,recordNumber\r\n"),
            std::string::npos);
  EXPECT_NE(LineWith(songs, "First").find(",00:03:35,1,First,Ada Quill,Tidal,J. Wren,TID-17"),
            std::string::npos)
      << songs;

  WriteFile(Path("new"), "<ZEB_NOW_ITEMNAME>!");
  const std::string replayed = Zebctl({"replay", "--service", "1", "--template", Path("new")}).output;
  EXPECT_NE(replayed.find("  First!\n"), std::string::npos) << replayed;
  EXPECT_LT(replayed.find("  First!\n"), replayed.find("  Second!\n")) << replayed;
}

TEST_F(HistoryTest, TellsWhatFailedBefore) {
  AddService(1, control, kPage, "missing/now.txt");
  Start();
  ASSERT_EQ(Send({Current("First")}).status, 0);
  EXPECT_NE(Await({"history"}, "FAILED").find("missing/now.txt: FAILED: "), std::string::npos);
  const Finished failing = Zebctl({"why", "1", "File1", "2100-01-01 00:00"});
  EXPECT_NE(failing.output.find("  shown     nothing had been published\n  failing   "), std::string::npos)
      << failing.output << failing.error;
  std::filesystem::create_directory(Path("missing"));
  AwaitPage("missing/now.txt", "First");
  Await({"why", "1", "File1", "2100-01-01 00:00"}, "SHA-256");
  const std::string why = Zebctl({"why", "1", "File1", "2100-01-01 00:00"}).output;
  EXPECT_LT(why.find("  item      First - Ada Quill"), why.find("  before    ")) << why;
}

TEST_F(HistoryTest, SaysOnceThatItsFileCannotBeWrittenAndPublishes) {
  AddService(1, control, kPage, "now.txt");
  std::filesystem::create_directory(Path("history.db"));
  Start();
  ASSERT_EQ(Send({Current("First")}).status, 0);
  EXPECT_NE(AwaitPage("now.txt", "First").find("First"), std::string::npos);
  ASSERT_TRUE(zebd->WaitForError("History: history file '" + Path("history.db") + "' is not a regular file"))
      << zebd->error;
  ASSERT_EQ(Send({Current("Second")}).status, 0);
  AwaitPage("now.txt", "Second");
  std::filesystem::remove(Path("history.db"));
  ASSERT_TRUE(zebd->WaitForError("History: is kept again", Seconds(20))) << zebd->error;
  // Nothing was lost, and it was said once.
  const std::string told = Zebctl({"history"}).output;
  EXPECT_NE(told.find("First"), std::string::npos) << told;
  EXPECT_NE(told.find("Second"), std::string::npos) << told;
  EXPECT_EQ(zebd->error.find("not a regular file"), zebd->error.rfind("not a regular file")) << zebd->error;
}

TEST_F(HistoryTest, ADamagedFileIsSetAsideAndANewOneBegun) {
  AddService(1, control, kPage, "now.txt");
  WriteFile(Path("history.db"), std::string(20000, 'x'));
  Start();
  ASSERT_EQ(Send({Current("First")}).status, 0);
  ASSERT_TRUE(zebd->WaitForError("a new one begun")) << zebd->error;
  EXPECT_NE(Await({"history"}, "First").find("First"), std::string::npos);
}

TEST_F(HistoryTest, IsWholeAfterEachKillAndHoldsWhatWasWritten) {
  constexpr int kKills = 20, kItems = 400;
  AddService(1, control, kPage, "now.txt");
  long written = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    Start();
    if (HasFatalFailure()) return;
    // A flood, so that the history is being written when the end comes, at another place each time.
    std::string lines;
    for (int i = 0; i < kItems; ++i)
      lines += Current("Kill " + std::to_string(kill) + " item " + std::to_string(i)) + "\r\n";
    Process feeding({Program("zebctl"), "send", "--port", std::to_string(6900 + control)});
    feeding.Write(lines);
    const long wanted = written + kill * 15;
    long seen = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (seen <= wanted && std::chrono::steady_clock::now() < end) {
      const std::string count = Ask("SELECT count(*) FROM items");
      seen = count.empty() ? 0 : std::stol(count);
    }
    EXPECT_GT(seen, wanted) << zebd->error;
    zebd->Signal(SIGKILL);
    ASSERT_EQ(zebd->Wait(), 128 + SIGKILL) << zebd->error;
    EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok") << "after kill " << kill;
    written = std::stol(Ask("SELECT count(*) FROM items"));
    EXPECT_GE(written, seen);
  }
  Start();
  const Finished listed = Zebctl({"history"});
  EXPECT_EQ(listed.status, 0) << listed.error;
  for (int kill = 0; kill < kKills; ++kill)
    EXPECT_NE(listed.output.find("Kill " + std::to_string(kill) + " item"), std::string::npos) << kill;
  EXPECT_EQ(zebd->error.find("History:"), std::string::npos) << zebd->error;
}

}  // namespace
}  // namespace zeb
