#include <gtest/gtest.h>

#include "core/clsZEBService.h"
#include "outputs/file/clsFileParameters.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

constexpr const char* kKey = "Software\\Service1\\File";

TEST(FileParametersTest, FoldersFollowTheNames) {
  struct Case {
    std::string name, folder;
  };
  for (const Case& c : {Case{"/srv/www/now.html", "/srv/www/"}, Case{"C:\\Pages\\now.html", "C:\\Pages\\"},
                        Case{"C:\\a/b.html", "C:\\a/"}, Case{"now.html", ""}, Case{"", ""}}) {
    clsFileParameters pair;
    pair.SetSourceFileName("/old/x");
    pair.SetDestinationFileName("/old/x");
    pair.SetSourceFileName(c.name);
    pair.SetDestinationFileName(c.name);
    EXPECT_EQ(pair.SourceFolder(), c.folder) << c.name;
    EXPECT_EQ(pair.DestinationFolder(), c.folder) << c.name;
  }
}

TEST(FileParametersTest, SwitchesAreSetOnlyUnderRulesAndNeverCleared) {
  clsFileParameters pair;
  pair.SetUpdateIfSong(true);
  EXPECT_EQ(pair.UpdateRulesFlags, 0);
  EXPECT_TRUE(pair.UpdateIfSong());  // no rules, no restriction
  pair.UseUpdateRules = true;
  EXPECT_FALSE(pair.UpdateIfSong());
  pair.SetUpdateIfSong(false);
  EXPECT_TRUE(pair.UpdateIfSong());
  pair.SetUpdateIfSong(false);
  EXPECT_EQ(pair.UpdateRulesFlags, 8);
  pair.SetUpdateIfAdvert(true);
  pair.SetUpdateIfCart(true);
  pair.SetUpdateIfJingle(true);
  pair.SetUpdateIfVoiceCustom(true);
  pair.SetUpdateIfUnknown(true);
  EXPECT_EQ(pair.UpdateRulesFlags, 63);
  pair.UpdateRulesFlags = 2;
  EXPECT_TRUE(pair.UpdateIfCart());
  EXPECT_FALSE(pair.UpdateIfSong());
}

class RulesTest : public testing::Test {
 protected:
  TestEnvironment t;
  ServiceEvents events;
  clsZEBService service{t.environment, [](OutputType) { return OutputPtr(); }, events};
};

TEST_F(RulesTest, EachTypeAsksItsSwitch) {
  struct Case {
    std::int32_t type, flag;
  };
  for (const Case& c :
       {Case{2, 2}, Case{12, 2}, Case{3, 4}, Case{13, 4}, Case{4, 1}, Case{14, 1}, Case{7, 8}, Case{0, 32},
        Case{1, 32}, Case{5, 32}, Case{6, 32}, Case{8, 32}, Case{17, 32}, Case{-1, 32}}) {
    clsZEBItemInfo item;
    item.Edit().ItemName = "x";
    item.Edit().ItemType = c.type;
    service.SetCurrentItem(item);
    clsFileParameters pair;
    EXPECT_TRUE(pair.IsDue(*service.TakeSnapshot())) << c.type;
    pair.UseUpdateRules = true;
    pair.UpdateRulesFlags = c.flag;
    EXPECT_TRUE(pair.IsDue(*service.TakeSnapshot())) << c.type;
    pair.UpdateRulesFlags = 63 & ~c.flag;
    EXPECT_FALSE(pair.IsDue(*service.TakeSnapshot())) << c.type;
  }
}

TEST_F(RulesTest, TheChosenItemDecidesAndItsAbsenceIsAReason) {
  clsFileParameters pair;
  pair.UseUpdateRules = true;
  for (std::int16_t which = 0; which <= 3; ++which) {
    service.ClearService();
    pair.UpdateRulesUsingItem = which;
    EXPECT_TRUE(pair.IsDue(*service.TakeSnapshot())) << which;
    clsZEBItemInfo item;
    item.ItemIndexNumber = 1;
    auto set = [&] {
      if (which == 0) service.SetCurrentItem(item);
      if (which == 1) service.SetNextItem(1, item);
      if (which == 2) service.SetPreviousItem(1, item);
      if (which == 3) service.SetComingSoonItem(item);
    };
    set();
    EXPECT_TRUE(pair.IsDue(*service.TakeSnapshot())) << "nothing but a number, " << which;
    clsZEBItemInfo pictured = item;
    pictured.AddPictureFile("a.jpg");
    std::swap(item, pictured);
    set();
    EXPECT_FALSE(pair.IsDue(*service.TakeSnapshot())) << "a picture makes an item, " << which;
    item.Edit().ItemType = 7;
    set();
    pair.UpdateRulesFlags = clsFileParameters::kSong;
    EXPECT_TRUE(pair.IsDue(*service.TakeSnapshot())) << which;
    pair.UpdateRulesFlags = 0;
    EXPECT_FALSE(pair.IsDue(*service.TakeSnapshot())) << which;
  }
}

TEST(FileParametersSettingsTest, RoundTrip) {
  MemoryHive hive;
  std::vector<clsFileParameters> pairs(2);
  pairs[0].SetSourceFileName("/t/a.html");
  pairs[0].SetDestinationFileName("/w/a.html");
  pairs[1].SetSourceFileName("b");
  pairs[1].SetDestinationFileName("c");
  pairs[1].UseUpdateRules = true;
  pairs[1].UpdateRulesFlags = 41;
  pairs[1].UpdateRulesUsingItem = 3;
  pairs[1].UseMultipleVersions = true;
  pairs[1].RefreshTagSeconds = 3600;
  pairs[1].AddNoCache = false;
  pairs[1].SimpleTextFormat = "";
  WritePairs(hive, kKey, 2, pairs);
  EXPECT_EQ(hive.ReadText(kKey, "Output2.NumberFiles", "?"), "2");
  EXPECT_EQ(hive.ReadText(kKey, "Output2.UpdateRulesFlags2", "?"), "41");
  EXPECT_EQ(hive.ReadText(kKey, "Output2.AddNoCache1", "?"), "1");
  std::vector<clsFileParameters> read = ReadPairs(hive, kKey, 2);
  ASSERT_EQ(read.size(), 2u);
  EXPECT_EQ(read[0].SourceFileName(), "/t/a.html");
  EXPECT_EQ(read[0].DestinationFolder(), "/w/");
  EXPECT_TRUE(read[0].AddNoCache);
  EXPECT_FALSE(read[0].UseUpdateRules);
  EXPECT_EQ(read[0].SimpleTextFormat, kDefaultSimpleTextFormat);
  EXPECT_EQ(read[1].DestinationFileName(), "c");
  EXPECT_TRUE(read[1].UseUpdateRules && read[1].UseMultipleVersions && !read[1].AddNoCache);
  EXPECT_EQ(read[1].UpdateRulesFlags, 41);
  EXPECT_EQ(read[1].UpdateRulesUsingItem, 3);
  EXPECT_EQ(read[1].RefreshTagSeconds, 3600);
  EXPECT_EQ(read[1].SimpleTextFormat, "");
  EXPECT_TRUE(ReadPairs(hive, kKey, 1).empty());
}

TEST(FileParametersSettingsTest, StrangeValuesAreReadSafely) {
  MemoryHive hive;
  hive.WriteText(kKey, "Output1.NumberFiles", "2000000000");
  EXPECT_EQ(ReadPairs(hive, kKey, 1).size(), 1000u);
  hive.WriteText(kKey, "Output1.NumberFiles", "-5");
  EXPECT_TRUE(ReadPairs(hive, kKey, 1).empty());
  hive.WriteText(kKey, "Output1.NumberFiles", "1 file");
  hive.WriteText(kKey, "output1.useupdaterules1", "-1");
  hive.WriteNumber(kKey, "Output1.UseMultipleVersions1", 1);
  hive.WriteText(kKey, "Output1.UpdateRulesUsingItem1", "4");
  hive.WriteText(kKey, "Output1.RefreshTagSeconds1", "70000");
  hive.WriteText(kKey, "Output1.AddNoCache1", "none");
  std::vector<clsFileParameters> pairs = ReadPairs(hive, kKey, 1);
  ASSERT_EQ(pairs.size(), 1u);
  EXPECT_TRUE(pairs[0].UseUpdateRules && pairs[0].UseMultipleVersions);
  EXPECT_EQ(pairs[0].UpdateRulesUsingItem, 0);
  EXPECT_EQ(pairs[0].RefreshTagSeconds, 32767);
  EXPECT_FALSE(pairs[0].AddNoCache);
}

}  // namespace
}  // namespace zeb
