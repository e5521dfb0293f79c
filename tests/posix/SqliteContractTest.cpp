// What every settings hive does, asked of the real one and of the one that the other tests run on.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/posix/SqliteHive.h"
#include "platform/simulated/MemoryHive.h"

namespace zeb {
namespace {

class HiveContract : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (!GetParam()) {
      hive_ = std::make_unique<MemoryHive>();
      return;
    }
    std::string name = "/tmp/zeb-hive-XXXXXX";
    folder_ = mkdtemp(name.data());
    auto opened = SqliteHive::Open(folder_ + "/settings.db");
    ASSERT_TRUE(opened.Ok()) << opened.Reason();
    hive_ = std::move(opened.Value());
  }
  void TearDown() override {
    hive_.reset();
    if (!folder_.empty()) std::filesystem::remove_all(folder_);
  }
  std::string folder_;
  std::unique_ptr<SettingsHive> hive_;
};

INSTANTIATE_TEST_SUITE_P(Hives, HiveContract, ::testing::Values(false, true),
                         [](const auto& given) { return given.param ? "Sqlite" : "Memory"; });

TEST_P(HiveContract, NamesAreComparedWithoutCaseAndShownAsFirstWritten) {
  hive_->WriteText("Software\\\xC3\x84pfel\\Key",
                   "Gr\xC3\xB6\xC3\x9F"
                   "e",
                   "1");
  hive_->WriteText("\\SOFTWARE\\\\\xC3\xA4PFEL\\key\\",
                   "GR\xC3\x96\xC3\x9F"
                   "E",
                   "2");
  EXPECT_EQ(hive_->SubKeys("software"), std::vector<std::string>{"\xC3\x84pfel"});
  ASSERT_EQ(hive_->Values("software\\\xC3\xA4pfel\\KEY").size(), 1u);
  EXPECT_EQ(hive_->Values("software\\\xC3\xA4pfel\\KEY")[0].name,
            "Gr\xC3\xB6\xC3\x9F"
            "e");
  EXPECT_EQ(hive_->ReadText("Software\\\xC3\x84pfel\\Key",
                            "gr\xC3\xB6\xC3\x9F"
                            "e",
                            ""),
            "2");
}

TEST_P(HiveContract, ListsOnlyWhatIsDirectlyBelowSorted) {
  for (const char* key : {"a\\b\\c", "a\\b!", "a\\b]", "a\\B2\\x\\y", "a]\\z", "ab"}) hive_->CreateKey(key);
  EXPECT_EQ(hive_->SubKeys("a"), (std::vector<std::string>{"b", "b!", "B2", "b]"}));
  EXPECT_EQ(hive_->SubKeys(""), (std::vector<std::string>{"a", "a]", "ab"}));
  EXPECT_TRUE(hive_->SubKeys("a\\b\\c").empty());
  EXPECT_TRUE(hive_->SubKeys("nowhere").empty());
  for (const char* name : {"b", "", "A", "a1"}) hive_->WriteNumber("v", name, 1);
  std::string names;
  for (const SettingsValue& value : hive_->Values("V")) names += value.name + ",";
  EXPECT_EQ(names, ",A,a1,b,");
}

TEST_P(HiveContract, DeletesAKeyWithAllBelowAndNothingBeside) {
  for (const char* key :
       {"s\\one", "s\\one\\x", "s\\ONE\\x\\y", "s\\one_", "s\\one!", "s\\one]", "s\\on%", "s\\one1"})
    hive_->WriteText(key, "v", "1");
  hive_->DeleteKey("S\\One");
  hive_->DeleteKey("s\\missing");
  EXPECT_EQ(hive_->SubKeys("s"), (std::vector<std::string>{"on%", "one!", "one1", "one]", "one_"}));
  for (const char* key : {"s\\one", "s\\one\\x", "s\\one\\x\\y"}) {
    EXPECT_FALSE(hive_->KeyExists(key)) << key;
    EXPECT_FALSE(hive_->HasValue(key, "v")) << key;
  }
  hive_->DeleteKey("");
  EXPECT_TRUE(hive_->SubKeys("").empty());
  EXPECT_FALSE(hive_->HasValue("s\\one_", "v"));
}

TEST_P(HiveContract, ReadsEitherKindAsTheOther) {
  struct Case {
    SettingsData stored;
    std::string text;
    std::int32_t number;
  };
  for (const Case& given : std::vector<Case>{{"12 apples", "12 apples", 12},
                                             {"", "", 0},
                                             {"none", "none", 0},
                                             {0u, "0", 0},
                                             {0xFFFFFFFFu, "-1", -1},
                                             {0x80000000u, "-2147483648", INT32_MIN},
                                             {std::string("a\0b\r\n", 5), std::string("a\0b\r\n", 5), 0}}) {
    if (const auto* text = std::get_if<std::string>(&given.stored))
      hive_->WriteText("k", "v", *text);
    else
      hive_->WriteNumber("k", "v", static_cast<std::int32_t>(std::get<std::uint32_t>(given.stored)));
    EXPECT_EQ(hive_->ReadText("k", "v", "default"), given.text);
    EXPECT_EQ(hive_->ReadNumber("k", "v", 99), given.number);
    EXPECT_EQ(hive_->Values("k")[0].data, given.stored);
  }
  hive_->DeleteValue("K", "V");
  EXPECT_EQ(hive_->ReadText("k", "v", "default"), "default");
  EXPECT_EQ(hive_->ReadNumber("missing", "v", 99), 99);
}

TEST_P(HiveContract, RefusesWhatIsAboveTheBounds) {
  const std::string part(kMaxSettingsKeyBytes - 2, 'k');
  const std::string name(kMaxSettingsNameCharacters, 'n');
  const std::string text(kMaxSettingsTextBytes, 't');
  hive_->WriteText("a\\" + part, name, text);
  EXPECT_EQ(hive_->ReadText("A\\" + part, name, ""), text);
  EXPECT_THROW(hive_->CreateKey("ab\\" + part), SettingsError);
  EXPECT_THROW(hive_->WriteNumber("b", name + "n", 1), SettingsError);
  EXPECT_THROW(hive_->WriteText("b", "v", text + "t"), SettingsError);
  EXPECT_THROW(hive_->CreateKey("b\nc"), SettingsError);
  EXPECT_FALSE(hive_->KeyExists("b"));
}

TEST_P(HiveContract, TransactionsAreAllOrNothing) {
  hive_->WriteText("k", "v", "old");
  const auto fails = [&] {
    hive_->DeleteKey("k");
    hive_->Transaction([&] { hive_->WriteText("new\\below", "v", "1"); });
    EXPECT_TRUE(hive_->HasValue("new\\below", "v"));
    throw std::runtime_error("part way");
  };
  EXPECT_THROW(hive_->Transaction(fails), std::runtime_error);
  EXPECT_EQ(hive_->ReadText("k", "v", ""), "old");
  EXPECT_FALSE(hive_->KeyExists("new"));
  hive_->Transaction([&] { hive_->WriteText("k", "v", "new"); });
  EXPECT_EQ(hive_->ReadText("k", "v", ""), "new");
}

}  // namespace
}  // namespace zeb
