// File outputs of a running service while something hangs, is slow, fails, and comes back.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "core/UpdateRecord.h"
#include "tests/outputs/FileFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Problems = std::vector<clsZEBTemplate::Problem>;

class FileOutputHangsTest : public FileOutputTest {
 protected:
  FileOutputHangsTest() {
    EXPECT_TRUE(t.files.CreateFolders("/share"));
    service.AddOutput(OutputType::kFile, output);
    t.files.fail = [this](const std::string& operation, const std::string& path) {
      ++asked[operation + " " + path];
      order.push_back(operation);
      if (const auto takes = slow.find(operation + " " + path); takes != slow.end())
        t.loop.Wait(takes->second);
      if (dead && path.rfind("/share/", 0) == 0) t.loop.WaitUntil([this] { return !dead; }, 24h);
      if (faults.count(operation + " " + path) != 0) throw std::runtime_error("out of luck");
      return std::string(operation + " " + path == refused ? "disk on fire" : "");
    };
  }
  std::shared_ptr<clsZEBFileOutput> Add(const clsFileParameters& pair) {
    auto added = MakeOutput();
    added->AddUpdateFile(pair);
    service.AddOutput(OutputType::kFile, added);
    return added;
  }
  void Publish(const std::string& title) {
    service.SetCurrentItem(Song(title));
    service.UpdateOutputs(true);
    t.loop.RunPosted();
  }
  void Revive() {
    dead = false;
    t.loop.Post([] {});
    t.loop.RunPosted();
  }
  void UpdateThrough(const UpdateRecord& record) override {
    for (const UpdateRun& run : record.runs)
      tallies.push_back(std::to_string(run.tally.published) + "+" + std::to_string(run.tally.failed));
  }
  void TearDown() override { EXPECT_EQ(t.loop.TaskCount(), 0u); }

  bool dead = false;    // the share
  std::string refused;  // an operation on a path
  std::map<std::string, Duration> slow;
  std::map<std::string, int> asked, faults;
  std::vector<std::string> order, tallies;
};

TEST_F(FileOutputHangsTest, ADeadShareHoldsUpNobodyAndIsRightAgainWhenItIsBack) {
  output->AddUpdateFile(Pair("/t/a", "/share/now.html"));
  const auto healthy = Add(Pair("/t/a", "/w/a"));
  Publish("One");
  ASSERT_EQ(t.files.Contents("/share/now.html"), "One!");
  t.loop.RunFor(1min);

  dead = true;
  Publish("Two");
  EXPECT_EQ(t.files.Contents("/w/a"), "Two!");
  t.loop.RunFor(10s);
  Publish("Three");
  EXPECT_EQ(t.files.Contents("/w/a"), "Three!");
  t.loop.RunFor(20s - 1ms);
  EXPECT_EQ(output->Problems(), Problems());
  EXPECT_EQ(output->Status(), kStatusOK);
  t.loop.RunFor(1ms);
  const Problems hangs = {
      {"", "'/share/now.html' has not answered for 30 s; check the disk or share that it is on"}};
  EXPECT_EQ(output->Problems(), hangs);
  EXPECT_EQ(StatusText(), "Error");
  EXPECT_TRUE(output->Hangs());

  // Nothing is begun with it meanwhile, and the other goes on at every item.
  const auto askedBefore = asked;
  for (int i = 0; i < 20; ++i) {
    t.loop.RunFor(61s);
    Publish("Song " + std::to_string(i));
    EXPECT_EQ(t.files.Contents("/w/a"), "Song " + std::to_string(i) + "!");
  }
  for (const auto& [what, times] : asked)
    if (what.find("/share/") != std::string::npos) {
      EXPECT_EQ(times, askedBefore.at(what)) << what;
    }
  EXPECT_EQ(output->Problems(), hangs);
  EXPECT_EQ(healthy->Problems(), Problems());
  EXPECT_EQ(t.files.Contents("/share/now.html"), "One!");

  t.loop.RunFor(7s);
  Revive();
  EXPECT_EQ(t.files.Contents("/share/now.html"), "Song 19!");
  EXPECT_EQ(tallies.back(), "1+0");
  EXPECT_EQ(output->Problems(), Problems());
  EXPECT_EQ(StatusText(), "OK");
  EXPECT_EQ(Names("/share"), std::vector<std::string>{"now.html"});
  EXPECT_TRUE(Names("/tmp").empty());
  const int operations = t.files.operations;
  t.loop.RunFor(10min);
  EXPECT_EQ(t.files.operations, operations);
}

// The late page was the right one: nothing is done again.
TEST_F(FileOutputHangsTest, WhatALateWorkerHasDoneCounts) {
  clsFileParameters pair = Pair("/t/a", "/share/now.html");
  pair.UseMultipleVersions = true;
  output->AddUpdateFile(pair);
  output->AddUpdateFile(Pair("/t/a", "/w/after"));
  dead = true;
  Publish("One");
  t.loop.RunFor(31s);
  EXPECT_EQ(tallies, std::vector<std::string>{"0+2"});
  Revive();
  EXPECT_EQ(t.files.Contents("/w/after"), "One!");
  EXPECT_EQ(Names("/share"), (std::vector<std::string>{"now.000001.html", "now.html"}));
  EXPECT_EQ(output->Problems(), Problems());
  EXPECT_EQ(tallies, (std::vector<std::string>{"0+2", "2+0"}));
  Publish("Two");
  EXPECT_TRUE(t.files.Exists("/share/now.000002.html"));
  t.loop.RunFor(2s);
}

TEST_F(FileOutputHangsTest, ManyPagesAreNotTakenForAShareThatHangs) {
  for (int i = 1; i <= 1000; ++i) {
    const std::string name = "/w/" + std::to_string(i);
    output->AddUpdateFile(Pair("/t/a", name));
    slow["Write " + name + ".tmp"] = 250ms;
  }
  Publish("One");
  t.loop.RunFor(250s - 1ms);
  EXPECT_FALSE(t.files.Exists("/w/1000"));
  EXPECT_EQ(output->Problems(), Problems());
  t.loop.RunFor(1ms);
  EXPECT_TRUE(t.files.Exists("/w/1000"));
  EXPECT_EQ(output->Problems(), Problems());
  EXPECT_EQ(tallies, std::vector<std::string>{"1000+0"});
  // One page at a time: each is in place before the next template is read.
  const std::vector<std::string> steps = {"Read", "Write", "Rename"};
  ASSERT_EQ(order.size(), 1000 * steps.size());
  for (std::size_t i = 0; i < order.size(); ++i) ASSERT_EQ(order[i], steps[i % steps.size()]) << i;
}

TEST_F(FileOutputHangsTest, ASlowDiskIsCalledSlowAndTheRestFollows) {
  for (const char* name : {"/w/1", "/w/2", "/w/3", "/w/4"}) {
    output->AddUpdateFile(Pair("/t/a", name));
    slow[std::string("Write ") + name + ".tmp"] = 12s;
  }
  Publish("One");
  t.loop.RunFor(30s);
  EXPECT_EQ(output->Problems(),
            (Problems{{"",
                       "the files take longer than 30 s, the last one is '/w/3'; check how fast the disk "
                       "or share is that they are on"}}));
  t.loop.RunFor(6s);
  EXPECT_TRUE(t.files.Exists("/w/3"));
  EXPECT_FALSE(t.files.Exists("/w/4"));
  t.loop.RunFor(12s);
  EXPECT_EQ(t.files.Contents("/w/4"), "One!");
  EXPECT_EQ(output->Problems(), Problems());
  for (const char* name : {"/w/1", "/w/2", "/w/3", "/w/4"})
    EXPECT_EQ(asked[std::string("Rename ") + name], 1) << name;
}

TEST_F(FileOutputHangsTest, ARepetitionDoesOnlyWhatFailed) {
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  output->AddUpdateFile(Pair("/t/a", "/later/b"));
  output->AddUpdateFile(Pair("/t/none", "/w/c"));
  Publish("One");
  EXPECT_EQ(output->Problems().size(), 2u);
  EXPECT_EQ(output->Problems()[0].thing, "/later/b");
  EXPECT_EQ(output->Problems()[1].thing, "/w/c");
  t.loop.RunFor(5s);
  EXPECT_EQ(asked["Write /later/b.tmp"], 2);
  t.files.Put("/t/none", "there");
  t.loop.RunFor(10s);
  ASSERT_TRUE(t.files.CreateFolders("/later"));
  t.loop.RunFor(20s - 1ms);
  EXPECT_FALSE(t.files.Exists("/later/b"));
  t.loop.RunFor(1ms);
  EXPECT_EQ(t.files.Contents("/later/b"), "One!");
  EXPECT_EQ(tallies, (std::vector<std::string>{"1+2", "0+2", "1+1", "1+0"}));
  EXPECT_EQ(asked["Rename /w/a"], 1);
  EXPECT_EQ(asked["Rename /w/c"], 1);
  t.loop.RunFor(10min);
  EXPECT_EQ(tallies.size(), 4u);
}

TEST_F(FileOutputHangsTest, ADestinationThatAHungWorkerHasIsFreeWhenItIsBack) {
  output->AddUpdateFile(Pair("/t/a", "/share/a"));
  const auto other = Add(Pair("/t/a", "/share//a"));
  other->AddUpdateFile(Pair("/t/a", "/w/b"));
  slow["Write /share/a.tmp"] = 100s;
  Publish("One");
  t.loop.RunFor(30s);
  EXPECT_TRUE(output->Hangs());
  EXPECT_EQ(t.files.Contents("/w/b"), "One!");  // it has waited for the other one long enough
  EXPECT_EQ(other->Problems(), (Problems{{"/share//a",
                                          "cannot write '/share//a': another output is still writing it; "
                                          "give each output a destination of its own"}}));
  // The output that hangs is gone; its worker is not, and has the file.
  service.RemoveOutput(OutputType::kFile, 1);
  output.reset();
  t.loop.RunFor(70s - 1ms);
  EXPECT_NE(other->Problems(), Problems());
  slow.clear();
  t.loop.RunFor(1min);
  EXPECT_EQ(t.files.Contents("/share/a"), "One!");
  EXPECT_EQ(other->Problems(), Problems());
}

TEST_F(FileOutputHangsTest, APageWaitsForThePictureThatAnotherOutputIsWriting) {
  t.files.Put("/pics/a.jpg", "picture");
  t.files.Put("/t/pic", "<ZEB_NOW_PICTUREFILENAME>");
  output->CopyAdditionalFiles = true;
  output->AddUpdateFile(Pair("/t/pic", "/w/1"));
  const auto other = Add(Pair("/t/pic", "/w/2"));
  other->CopyAdditionalFiles = true;
  t.files.observe = [this](const std::string& operation, const std::string& path) {
    if (operation == "Rename" && path == "/w/2") {
      EXPECT_EQ(t.files.Contents("/w/a.jpg"), "picture");
    }
  };
  const auto publish = [this](const std::string& title) {
    clsZEBItemInfo item = Song(title);
    item.AddPictureFile("/pics/a.jpg");
    service.SetCurrentItem(item);
    service.UpdateOutputs(true);
    t.loop.RunPosted();
  };
  slow["Copy /w/a.jpg.tmp"] = 10s;
  publish("One");
  t.loop.RunFor(10s - 1ms);
  EXPECT_FALSE(t.files.Exists("/w/2"));
  t.loop.RunFor(1ms);
  EXPECT_TRUE(t.files.Exists("/w/1"));
  EXPECT_TRUE(t.files.Exists("/w/2"));
  EXPECT_EQ(asked["Copy /w/a.jpg.tmp"], 1);  // the second one found it equal
  EXPECT_TRUE(t.person.notes.empty());

  // Not for ever: the page is worth more than its picture.
  slow["Copy /w/a.jpg.tmp"] = 40s;
  t.files.Put("/pics/a.jpg", "picture 2");
  t.files.observe = nullptr;
  const int before = asked["Rename /w/2"];
  publish("Two");
  t.loop.RunFor(30s - 1ms);
  EXPECT_EQ(asked["Rename /w/2"], before);
  t.loop.RunFor(1ms);
  EXPECT_EQ(asked["Rename /w/2"], before + 1);
  EXPECT_EQ(other->Problems(), Problems());
  EXPECT_EQ(t.person.notes,
            std::vector<std::string>{"File: cannot write '/w/a.jpg': another output is still writing it"});
  EXPECT_EQ(output->Problems(), (Problems{{"",
                                           "copying '/pics/a.jpg' to '/w/a.jpg' has not answered for 30 s; "
                                           "check the disk or share that it is on"}}));
  t.loop.RunFor(10s);
  EXPECT_EQ(t.files.Contents("/w/a.jpg"), "picture 2");
  EXPECT_EQ(output->Problems(), Problems());
}

TEST_F(FileOutputHangsTest, AFaultIsNamedAndTriedAgain) {
  output->AddUpdateFile(Pair("/t/a", "/w/1"));
  output->AddUpdateFile(Pair("/t/a", "/w/2"));
  faults["Write /w/2.tmp"] = 1;
  Publish("One");
  EXPECT_EQ(output->Problems(), (Problems{{"", "out of luck"}}));
  EXPECT_EQ(StatusText(), "Error");
  faults.clear();
  t.loop.RunFor(5s);
  EXPECT_EQ(t.files.Contents("/w/2"), "One!");
  EXPECT_EQ(asked["Rename /w/1"], 1);
  EXPECT_EQ(output->Problems(), Problems());
  EXPECT_EQ(StatusText(), "OK");
}

TEST_F(FileOutputHangsTest, DeletingAWorkFileMayHangToo) {
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  refused = "Rename /w/a";
  slow["Delete /w/a.tmp"] = 45s;
  Publish("One");
  t.loop.RunFor(30s);
  EXPECT_EQ(output->Problems(),
            (Problems{{"", "'/w/a' has not answered for 30 s; check the disk or share that it is on"}}));
  EXPECT_TRUE(output->Hangs());
  slow.clear();
  refused.clear();
  t.loop.RunFor(15s - 1ms);
  EXPECT_TRUE(output->Hangs());
  t.loop.RunFor(1ms);
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  EXPECT_EQ(output->Problems(), Problems());
}

// One that was removed: its pages are no longer wanted.
TEST_F(FileOutputHangsTest, AnOutputThatIsStoppedWritesNoFurtherPage) {
  output->AddUpdateFile(Pair("/t/a", "/share/a"));
  output->AddUpdateFile(Pair("/t/a", "/w/b"));
  dead = true;
  Publish("One");
  t.loop.RunFor(5s);
  service.RemoveOutput(OutputType::kFile, 1);
  output->StopOutput();
  Revive();
  EXPECT_TRUE(t.files.Exists("/share/a"));
  EXPECT_FALSE(t.files.Exists("/w/b"));
}

TEST_F(FileOutputHangsTest, AnUpdateThatIsCancelledEndsWithThePageItIsAt) {
  for (const char* name : {"/w/1", "/w/2", "/w/3"}) {
    output->AddUpdateFile(Pair("/t/a", name));
    slow[std::string("Write ") + name + ".tmp"] = 2s;
  }
  Publish("One");
  t.loop.RunFor(3s);
  service.BeginStopping();
  service.CancelOutputs();
  t.loop.RunFor(1s);
  EXPECT_FALSE(service.UpdateInProgress());
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{"1", "2"}));
}

}  // namespace
}  // namespace zeb
