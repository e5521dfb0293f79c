#include <gtest/gtest.h>

#include "platform/common/LibxmlMarkup.h"
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
  ASSERT_TRUE(ports.files.FindTarget("/data/on.wsx", {}).Value()->Replace("TITLE=two").Ok());
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

TEST_F(InfoFileSourceTest, AWrongFileIsReadAgainWhenItChanges) {
  ports.files.Put("/data/on.wsx", "<BroadcastMonitor><Current>");
  source->Open(kSourceDallet51, "on.wsx");
  Run(5s);
  EXPECT_EQ(Notes(), 1u);
  const int operations = ports.files.operations;
  Run(10s);
  EXPECT_EQ(ports.files.operations, operations + 10) << "one look a second, no reading";
  ports.files.Put(
      "/data/on.wsx",
      "<BroadcastMonitor><Current><titleName>c</titleName></Current><Next><titleName>n</titleName>"
      "</Next></BroadcastMonitor>");
  Run(1s);
  EXPECT_EQ(Current(), "c");
  EXPECT_EQ(Next(1), "n");
  EXPECT_EQ(window.updates, 1);
}

TEST_F(InfoFileSourceTest, AWrongFileIsPutRightWithinOneClockTick) {
  ports.files.Put("/data/on.wsx", "<BroadcastMonitor></BroadcastMonitor ");
  ports.files.SetModified("/data/on.wsx", 50);
  source->Open(kSourceDallet51, "on.wsx");
  Run(1s);
  ports.files.Put("/data/on.wsx", "<BroadcastMonitor></BroadcastMonitor>");
  ports.files.SetModified("/data/on.wsx", 50);
  Run(2s);
  EXPECT_EQ(window.updates, 1);
}

constexpr const char* kDefinitions =
    "[ZEBSource]\nItemStatus.Start=1\nItemStatus.Length=1\nItemTitle.Start=3\n";

TEST_F(InfoFileSourceTest, ReadsGenericTextOnceItsDefinitionsAreThere) {
  ports.files.Put("/data/on.asc", "C now\n  then");
  source->Open(kSourceGenericText, "on.asc");
  Run(10s);
  EXPECT_EQ(Current(), "");
  EXPECT_EQ(Notes(), 1u);
  const int operations = ports.files.operations;
  Run(10s);
  EXPECT_EQ(ports.files.operations, operations + 20) << "a look a second at both, no reading";
  ports.files.Put("/data/Generic.ini", kDefinitions);
  Run(1s);
  EXPECT_EQ(Current(), "now");
  EXPECT_EQ(Next(1), "then");
  ports.files.Put("/data/on.asc", std::string(60, '\n'));
  Run(1s);
  EXPECT_NE(ports.person.notes.back().find("11 items more"), std::string::npos);
}

TEST_F(InfoFileSourceTest, CorrectedDefinitionsCountAtOnceAndAfterAReload) {
  ports.files.Put("/data/on.asc", "C-now");
  ports.files.Put("/data/Generic.ini", kDefinitions);
  source->Open(kSourceGenericText, "on.asc");
  Run(10s);
  EXPECT_EQ(Current(), "now");
  std::string wider = kDefinitions;
  wider.replace(wider.rfind('3'), 1, "2");
  ports.files.Put("/data/Generic.ini", wider);
  Run(1s);
  EXPECT_EQ(Current(), "-now");
  Run(10s);
  EXPECT_EQ(window.updates, 2);
  // A change that has left no trace.
  const FileInfo stamp = *ports.files.Stat("/data/Generic.ini");
  ports.files.Put("/data/Generic.ini", kDefinitions);
  ports.files.SetModified("/data/Generic.ini", stamp.modified);
  Run(10s);
  EXPECT_EQ(Current(), "-now");
  source->Open(kSourceGenericText, "on.asc");
  Run(1s);
  EXPECT_EQ(Current(), "now");
  ports.files.Put("/data/Generic.ini", "[Other]\n");
  Run(10s);
  EXPECT_EQ(Notes(), 1u);
  EXPECT_EQ(Current(), "now");
}

// A file system of which some folders hang: whoever touches a file there waits until they do not.
class HangingFiles : public SimulatedFiles {
 public:
  explicit HangingFiles(EventLoop& loop) : loop_(loop) {}
  std::optional<FileInfo> Stat(const std::string& path) override {
    ++looks[path];
    WaitFor(path);
    if (lookTakes > 0s) loop_.Wait(lookTakes);
    return SimulatedFiles::Stat(path);
  }
  Result<std::string> Read(const std::string& path, std::uint64_t limit) override {
    WaitFor(path + " read");
    return SimulatedFiles::Read(path, limit);
  }
  std::string dead;  // what begins so does not answer; "" for none
  Duration lookTakes{};
  std::map<std::string, int> looks;
  int waiting = 0;

 private:
  void WaitFor(const std::string& path) {
    if (dead.empty() || !path.starts_with(dead)) return;
    ++waiting;
    loop_.WaitUntil([this, path] { return dead.empty() || !path.starts_with(dead); }, 1000h);
    --waiting;
  }
  EventLoop& loop_;
};

struct DeadShare : InfoFileSourceTest {
  DeadShare() {
    Environment& real = ports.environment;
    environment = std::make_unique<Environment>(
        Environment{real.loop, real.hive, files, real.network, real.person, real.carts, "/data", "root"});
  }
  std::shared_ptr<InfoFileSource> Open(const std::string& path, ItemIntake& into) {
    auto opened = std::make_shared<InfoFileSource>(*environment, into);
    files.Put(path, "TITLE=one");
    opened->Open(kSourceDallet50, path);
    return opened;
  }

  HangingFiles files{ports.loop};
  std::unique_ptr<Environment> environment;
  clsZEBService otherService{ports.environment, nullptr, *this};
  ItemIntake otherIntake{otherService, window};
  std::string OtherCurrent() const { return otherService.CurrentItem()->ItemName; }
};

TEST_F(DeadShare, HoldsUpNobodyElseIsToldOfAndMends) {
  const auto onShare = Open("/share/on.wsx", intake);
  const auto here = Open("/here/on.wsx", otherIntake);
  Run(2s);
  EXPECT_EQ(Current() + OtherCurrent(), "oneone");
  files.dead = "/share/";
  Run(10s);
  files.Put("/here/on.wsx", "TITLE=two");
  Run(1s);
  EXPECT_EQ(OtherCurrent(), "two") << "one look takes a second at the most once the share is known to hang";
  Run(18s);
  EXPECT_EQ(Notes(), 0u);
  Run(1h);
  EXPECT_EQ(ports.person.notes, (std::vector<std::string>{
                                    "The information file '/share/on.wsx' cannot be read: its share has not "
                                    "answered for 30 s"}));
  EXPECT_EQ(files.waiting, 1) << "one worker waits, not one a second";
  files.Put("/share/on.wsx", "TITLE=back");
  files.dead.clear();
  Run(2s);
  EXPECT_EQ(Current(), "back");
  ASSERT_EQ(Notes(), 2u);
  EXPECT_EQ(ports.person.notes.back(), "The information file '/share/on.wsx' answers again");
}

TEST_F(DeadShare, IsToldOfWhenOnlyReadingHangs) {
  const auto onShare = Open("/share/on.wsx", intake);
  const auto here = Open("/here/on.wsx", otherIntake);
  files.dead = "/share/on.wsx read";
  Run(30s);
  EXPECT_EQ(Notes(), 0u);
  Run(1h);
  EXPECT_EQ(Notes(), 1u);
  EXPECT_EQ(files.waiting, 1);
  EXPECT_EQ(OtherCurrent(), "one");
  files.dead.clear();
  Run(2s);
  EXPECT_EQ(Current(), "one");
  EXPECT_EQ(Notes(), 2u);
}

TEST_F(DeadShare, ManyFilesOnItTakeFewWorkers) {
  std::vector<std::shared_ptr<InfoFileSource>> sources;
  for (int i = 0; i < 100; ++i) sources.push_back(Open("/share/" + std::to_string(i) + "/on.wsx", intake));
  const auto here = Open("/here/on.wsx", otherIntake);
  files.dead = "/share/";
  Run(60s);
  EXPECT_LE(files.waiting, static_cast<int>(FilePoller::kManyHanging));
  EXPECT_EQ(OtherCurrent(), "one");
  const int looks = files.looks["/here/on.wsx"];
  Run(10s);
  EXPECT_EQ(files.looks["/here/on.wsx"], looks + 10);
  sources.clear();  // the windows are closed while it hangs
  files.dead.clear();
  Run(5s);
  EXPECT_EQ(files.waiting, 0);
}

TEST_F(DeadShare, OneThatIsOnlySlowIsLookedAtInParts) {
  std::vector<std::shared_ptr<InfoFileSource>> sources;
  for (int i = 0; i < 10; ++i) sources.push_back(Open("/share/" + std::to_string(i) + "/on.wsx", intake));
  files.lookTakes = 600ms;
  Run(60s);
  for (int i = 0; i < 10; ++i) EXPECT_GE(files.looks["/share/" + std::to_string(i) + "/on.wsx"], 3) << i;
  EXPECT_EQ(window.updates, 10) << "each was read";
  EXPECT_EQ(Notes(), 0u);
}

TEST_F(InfoFileSourceTest, ASlowAnswerIsDroppedAfterAChange) {
  Put("one");
  Put("other", "/data/other.wsx");
  source->Open(kSourceDallet50, "on.wsx");
  ports.loop.SetBlockingTime(1500ms);
  Run(3s);  // looked at, and being read
  source->Open(kSourceDallet50, "other.wsx");
  ports.loop.SetBlockingTime(0s);
  Run(4s);
  EXPECT_EQ(Current(), "other");
  EXPECT_EQ(window.updates, 1) << "the other file was never taken";
  ports.loop.SetBlockingTime(1500ms);
  Put("late", "/data/other.wsx");
  Run(3s);
  source.reset();  // the window is gone while the file is read
  Run(60s);
  EXPECT_EQ(Current(), "other");
}

}  // namespace
}  // namespace zeb
