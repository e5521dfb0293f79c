#include "outputs/file/LeftOvers.h"
#include "tests/outputs/FileFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class LeftOversTest : public FileOutputTest {
 protected:
  void Remove() {
    t.files.Restart();
    LeftOvers leftOvers(t.environment);
    leftOvers.AddPages(*output);
    leftOvers.Remove();
  }
};

TEST_F(LeftOversTest, WorkFilesAndTemporaryPagesOfAnEarlierRunGo) {
  ASSERT_TRUE(t.files.CreateFolders("/share"));
  t.files.PutLink("/w/link", "/share/page");
  for (const char* name : {"/w/a.tmp", "/share/page.tmp", "/w/other.tmp", "/w/c.tmp", "/data/rel.tmp"})
    t.files.Put(name, "left over");
  ASSERT_TRUE(t.files.MakeTempFile("TMP"));
  ASSERT_TRUE(t.files.MakeTempFile("TMPKEPT"));
  t.files.Put("/tmp/TMPfoo", "another program's");
  for (const char* name : {"/w/a", "/w/link", "/w/c", "/w/c.tmp", "rel", ""})
    output->AddUpdateFile(Pair("/t/a", name));
  Remove();
  t.loop.RunPosted();
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{"c.tmp", "link", "other.tmp"}));
  EXPECT_TRUE(Names("/share").empty());
  EXPECT_TRUE(Names("/data").empty());
  EXPECT_EQ(Names("/tmp"), (std::vector<std::string>{"TMPKEPT2", "TMPfoo"}));
  EXPECT_EQ(t.person.notes,
            std::vector<std::string>{"Removed 4 files that an earlier run had left unfinished"});
}

TEST_F(LeftOversTest, NothingIsSaidWhenNothingWasLeft) {
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  Remove();
  t.files.Put("/w/a.tmp", "this run's");
  t.loop.RunPosted();
  EXPECT_TRUE(t.files.Exists("/w/a.tmp"));
  EXPECT_TRUE(t.person.notes.empty());
  EXPECT_EQ(t.loop.TaskCount(), 0u);
}

// The others' pages come all the same, and are cleaned.
TEST_F(LeftOversTest, AShareThatHangsKeepsNobodyWaiting) {
  for (const char* name : {"/w/1", "/w/2", "/w/3"}) {
    t.files.Put(std::string(name) + ".tmp", "left over");
    output->AddUpdateFile(Pair("/t/a", name));
  }
  bool dead = true;
  t.files.fail = [&](const std::string& operation, const std::string& path) {
    if (operation == "Delete" && path == "/w/1.tmp") t.loop.WaitUntil([&] { return !dead; }, 24h);
    return std::string();
  };
  Remove();
  t.loop.RunFor(9s);
  EXPECT_TRUE(t.files.Exists("/w/2.tmp"));
  t.loop.RunFor(1s);
  EXPECT_EQ(Names("/w"), std::vector<std::string>{"1.tmp"});
  EXPECT_EQ(t.person.notes.size(), 1u);
  dead = false;
  t.loop.RunFor(1s);
  EXPECT_TRUE(Names("/w").empty());
  EXPECT_EQ(t.loop.TaskCount(), 0u);
}

}  // namespace
}  // namespace zeb
