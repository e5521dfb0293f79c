#include <gtest/gtest.h>

#include "platform/posix/LibxmlMarkup.h"
#include "sources/InfoFileSource.h"
#include "tests/sources/IntakeFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

struct InfoFileSourceTest : IntakeFixture {
  InfoFileSourceTest() { ports.environment.markup = &markup; }
  void Put(const std::string& title, const std::string& path = "/data/on.wsx") {
    ports.files.Put(path, "TITLE=" + title + "\n");
  }
  void Run(Duration time) { ports.loop.RunFor(time); }
  std::size_t Notes() const { return ports.person.notes.size(); }

  LibxmlMarkup markup;
  std::shared_ptr<InfoFileSource> source = std::make_shared<InfoFileSource>(ports.environment, intake);
};

TEST_F(InfoFileSourceTest, ReadsAtTheFirstTickAndAfterEachChange) {
  Put("one");
  source->Open(kSourceDallet50, "on.wsx");
  Run(999ms);
  EXPECT_EQ(Current(), "");
  Run(1ms);
  EXPECT_EQ(Current(), "one");
  EXPECT_EQ(window.updates, 1);
  EXPECT_EQ(window.information, "Information Update received, Updating..");
  Run(10s);
  EXPECT_EQ(window.updates, 1);
  Put("one");  // touched: read again, and nothing stored
  ports.loop.SetWallClock(ports.loop.Now() - 24h);
  Run(1s);
  EXPECT_EQ(window.updates, 2);
  EXPECT_EQ((*service.PreviousItem(1))->ItemName, "");
  ports.files.Put("/data/new", "TITLE=two");
  ASSERT_TRUE(ports.files.Rename("/data/new", "/data/on.wsx").Ok());
  Run(1s);
  EXPECT_EQ(Current(), "two");
  EXPECT_EQ(Notes(), 0u);
}

TEST_F(InfoFileSourceTest, SeesARewriteWithinOneClockTick) {
  Put("one");
  ports.files.SetModified("/data/on.wsx", 50);
  source->Open(kSourceDallet50, "/data/on.wsx");
  Run(1s);
  Put("two");  // the same size, the same stamp
  ports.files.SetModified("/data/on.wsx", 50);
  Run(2s);
  EXPECT_EQ(Current(), "two");
  Put("longer");
  ports.files.SetModified("/data/on.wsx", 50);
  Run(1s);
  EXPECT_EQ(Current(), "longer");
  EXPECT_EQ(window.updates, 3);
  Run(3s);
  const int operations = ports.files.operations;
  Run(10s);
  EXPECT_EQ(ports.files.operations, operations + 10);  // one look a second, no reading
}

TEST_F(InfoFileSourceTest, KeepsItsItemsWhateverIsInTheWay) {
  Put("one");
  source->Open(kSourceDallet50, "on.wsx");
  Run(5s);
  ASSERT_TRUE(ports.files.Delete("/data/on.wsx").Ok());
  Run(5s);
  EXPECT_EQ(Notes(), 1u);  // told once
  ports.files.PutSpecial("/data/on.wsx");
  Run(5s);
  ASSERT_TRUE(ports.files.Delete("/data/on.wsx").Ok());
  ports.files.Put("/data/on.wsx", "");
  Run(5s);
  ports.files.fail = [](const std::string&, const std::string&) { return "locked"; };
  Put("two");
  Run(5s);
  EXPECT_EQ(Notes(), 3u);
  EXPECT_EQ(Current(), "one");
  EXPECT_EQ(window.updates, 1);
  ports.files.fail = nullptr;  // nothing else changed
  Run(1s);
  EXPECT_EQ(Current(), "two");
  EXPECT_EQ(ports.person.notes.back(), "The information file '/data/on.wsx' is read again");
}

TEST_F(InfoFileSourceTest, TriesAWrongFileAgainAndTellsOnce) {
  ports.files.Put("/data/on.wsx", "<BroadcastMonitor><Current>");
  source->Open(kSourceDallet51, "on.wsx");
  Run(5s);
  EXPECT_EQ(Notes(), 1u);
  ports.files.Put(
      "/data/on.wsx",
      "<BroadcastMonitor><Current><titleName>c</titleName></Current><Next><titleName>n</titleName>"
      "</Next></BroadcastMonitor>");
  Run(1s);
  EXPECT_EQ(Current(), "c");
  EXPECT_EQ(Next(1), "n");
  EXPECT_EQ(window.updates, 1);
}

TEST_F(InfoFileSourceTest, ReadsGenericTextOnceItsDefinitionsAreThere) {
  ports.files.Put("/data/on.asc", "C now\n  then");
  source->Open(kSourceGenericText, "on.asc");
  Run(3s);
  EXPECT_EQ(Current(), "");
  EXPECT_EQ(Notes(), 1u);
  ports.files.Put("/data/Generic.ini",
                  "[ZEBSource]\nItemStatus.Start=1\nItemStatus.Length=1\nItemTitle.Start=3\n");
  Run(1s);
  EXPECT_EQ(Current(), "now");
  EXPECT_EQ(Next(1), "then");
  ports.files.Put("/data/on.asc", std::string(60, '\n'));
  Run(1s);
  EXPECT_NE(ports.person.notes.back().find("11 items more"), std::string::npos);
}

TEST_F(InfoFileSourceTest, AHangingShareIsAskedOnceAndItsAnswerDroppedAfterAChange) {
  Put("one");
  Put("other", "/data/other.wsx");
  ports.loop.SetBlockingTime(30s);
  source->Open(kSourceDallet50, "on.wsx");
  Run(10s);
  EXPECT_EQ(ports.loop.TaskCount(), 1u);
  source->Open(kSourceDallet50, "other.wsx");
  ports.loop.SetBlockingTime(0s);
  Run(1s);
  EXPECT_EQ(Current(), "other");
  Run(60s);
  EXPECT_EQ(Current(), "other");
  ports.loop.SetBlockingTime(30s);
  Put("late", "/data/other.wsx");
  Run(2s);
  source.reset();  // the window is gone while the share hangs
  Run(60s);
  EXPECT_EQ(Current(), "other");
}

}  // namespace
}  // namespace zeb
