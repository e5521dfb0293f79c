// What every settings hive does. A suite supplies `hive`, an empty one.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/SettingsHive.h"

namespace zeb {

template <class Fixture>
struct HiveContract : Fixture {};

TYPED_TEST_SUITE_P(HiveContract);

TYPED_TEST_P(HiveContract, NamesAreComparedWithoutCaseAndShownAsFirstWritten) {
  this->hive->WriteText("Software\\\xC3\x84pfel\\Key",
                        "Gr\xC3\xB6\xC3\x9F"
                        "e",
                        "1");
  this->hive->WriteText("\\SOFTWARE\\\\\xC3\xA4PFEL\\key\\",
                        "GR\xC3\x96\xC3\x9F"
                        "E",
                        "2");
  EXPECT_EQ(this->hive->SubKeys("software"), std::vector<std::string>{"\xC3\x84pfel"});
  ASSERT_EQ(this->hive->Values("software\\\xC3\xA4pfel\\KEY").size(), 1u);
  EXPECT_EQ(this->hive->Values("software\\\xC3\xA4pfel\\KEY")[0].name,
            "Gr\xC3\xB6\xC3\x9F"
            "e");
  EXPECT_EQ(this->hive->ReadText("Software\\\xC3\x84pfel\\Key",
                                 "gr\xC3\xB6\xC3\x9F"
                                 "e",
                                 ""),
            "2");
}

TYPED_TEST_P(HiveContract, ListsOnlyWhatIsDirectlyBelowSorted) {
  for (const char* key : {"a\\b\\c", "a\\b!", "a\\b]", "a\\B2\\x\\y", "a]\\z", "ab"})
    this->hive->CreateKey(key);
  EXPECT_EQ(this->hive->SubKeys("a"), (std::vector<std::string>{"b", "b!", "B2", "b]"}));
  EXPECT_EQ(this->hive->SubKeys(""), (std::vector<std::string>{"a", "a]", "ab"}));
  EXPECT_TRUE(this->hive->SubKeys("a\\b\\c").empty());
  EXPECT_TRUE(this->hive->SubKeys("nowhere").empty());
  for (const char* name : {"b", "", "A", "a1"}) this->hive->WriteNumber("v", name, 1);
  std::string names;
  for (const SettingsValue& value : this->hive->Values("V")) names += value.name + ",";
  EXPECT_EQ(names, ",A,a1,b,");
}

TYPED_TEST_P(HiveContract, DeletesAKeyWithAllBelowAndNothingBeside) {
  for (const char* key :
       {"s\\one", "s\\one\\x", "s\\ONE\\x\\y", "s\\one_", "s\\one!", "s\\one]", "s\\on%", "s\\one1"})
    this->hive->WriteText(key, "v", "1");
  this->hive->DeleteKey("S\\One");
  this->hive->DeleteKey("s\\missing");
  EXPECT_EQ(this->hive->SubKeys("s"), (std::vector<std::string>{"on%", "one!", "one1", "one]", "one_"}));
  for (const char* key : {"s\\one", "s\\one\\x", "s\\one\\x\\y"}) {
    EXPECT_FALSE(this->hive->KeyExists(key)) << key;
    EXPECT_FALSE(this->hive->HasValue(key, "v")) << key;
  }
  this->hive->DeleteKey("");
  EXPECT_TRUE(this->hive->SubKeys("").empty());
  EXPECT_FALSE(this->hive->HasValue("s\\one_", "v"));
}

TYPED_TEST_P(HiveContract, ReadsEitherKindAsTheOther) {
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
      this->hive->WriteText("k", "v", *text);
    else
      this->hive->WriteNumber("k", "v", static_cast<std::int32_t>(std::get<std::uint32_t>(given.stored)));
    EXPECT_EQ(this->hive->ReadText("k", "v", "default"), given.text);
    EXPECT_EQ(this->hive->ReadNumber("k", "v", 99), given.number);
    EXPECT_EQ(this->hive->Values("k")[0].data, given.stored);
  }
  this->hive->DeleteValue("K", "V");
  EXPECT_EQ(this->hive->ReadText("k", "v", "default"), "default");
  EXPECT_EQ(this->hive->ReadNumber("missing", "v", 99), 99);
}

TYPED_TEST_P(HiveContract, RefusesWhatIsAboveTheBounds) {
  // Of 16 KiB with "a\\" before it; no part is longer than a registry takes.
  std::string part(kMaxSettingsKeyBytes - 2, 'k');
  for (std::size_t i = 127; i < part.size() - 1; i += 128) part[i] = '\\';
  const std::string name(kMaxSettingsNameCharacters, 'n');
  const std::string text(kMaxSettingsTextBytes, 't');
  this->hive->WriteText("a\\" + part, name, text);
  EXPECT_EQ(this->hive->ReadText("A\\" + part, name, ""), text);
  EXPECT_THROW(this->hive->CreateKey("ab\\" + part), SettingsError);
  EXPECT_THROW(this->hive->WriteNumber("b", name + "n", 1), SettingsError);
  EXPECT_THROW(this->hive->WriteText("b", "v", text + "t"), SettingsError);
  EXPECT_THROW(this->hive->CreateKey("b\nc"), SettingsError);
  EXPECT_FALSE(this->hive->KeyExists("b"));
}

TYPED_TEST_P(HiveContract, TransactionsAreAllOrNothing) {
  this->hive->WriteText("k", "v", "old");
  const auto fails = [&] {
    this->hive->DeleteKey("k");
    this->hive->Transaction([&] { this->hive->WriteText("new\\below", "v", "1"); });
    EXPECT_TRUE(this->hive->HasValue("new\\below", "v"));
    throw std::runtime_error("part way");
  };
  EXPECT_THROW(this->hive->Transaction(fails), std::runtime_error);
  EXPECT_EQ(this->hive->ReadText("k", "v", ""), "old");
  EXPECT_FALSE(this->hive->KeyExists("new"));
  this->hive->Transaction([&] { this->hive->WriteText("k", "v", "new"); });
  EXPECT_EQ(this->hive->ReadText("k", "v", ""), "new");
}

REGISTER_TYPED_TEST_SUITE_P(HiveContract, NamesAreComparedWithoutCaseAndShownAsFirstWritten,
                            ListsOnlyWhatIsDirectlyBelowSorted, DeletesAKeyWithAllBelowAndNothingBeside,
                            ReadsEitherKindAsTheOther, RefusesWhatIsAboveTheBounds,
                            TransactionsAreAllOrNothing);

}  // namespace zeb
