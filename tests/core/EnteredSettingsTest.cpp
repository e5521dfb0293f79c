#include <gtest/gtest.h>

#include "core/EnteredSettings.h"
#include "core/clsZEBService.h"
#include "platform/simulated/MemoryHive.h"

namespace zeb {
namespace {

struct Things {
  std::string Text = "t";
  std::int32_t Number = 3, Held = 5, Kind = 1;
  bool Switch = true;
  CharacterSet Set = CharacterSet::kRds;
  std::string Port = "4000", Most, Escape, Password;
  std::int32_t Own = 0;
};
constexpr SettingRow<Things> kRows[] = {
    {"Text", &Things::Text},
    {"Number", &Things::Number, StoredAs::kNumber},
    {.name = "Held", .member = &Things::Held, .least = 2, .most = 600, .entry = {.least = 0, .most = 100}},
    {.name = "Kind", .member = &Things::Kind, .storedAs = StoredAs::kNumber, .entry = {.words = "1|2|4"}},
    {"Switch", &Things::Switch, StoredAs::kNumber},
    {"Set", &Things::Set},
    {.name = "Port", .member = &Things::Port, .entry = kPortEntry},
    {.name = "Most", .member = &Things::Most, .entry = kCountEntry},
    {.name = "Escape", .member = &Things::Escape, .entry = kEscapeEntry},
    {"Password", &Things::Password, StoredAs::kText, true},
    {.name = "Own", .member = &Things::Own, .entry = {.offered = false}},
};

SettingList List() {
  return ListOf(SettingTable<Things>(kRows));
}

TEST(EnteredSettings, AreCheckedAgainstTheirTable) {
  const struct {
    std::string name, value, stored, reason;
  } cases[] = {
      {"Text", "any = thing", "any = thing", ""},
      {"text", "", "", ""},
      {"Number", "-7", "-7", ""},
      {"Number", "7 ", "", "Number takes a whole number, not '7 '"},
      {"Number", "3000000000", "", "Number takes a whole number, not '3000000000'"},
      {"Held", "2", "2", ""},
      {"Held", "1", "", "Held takes a whole number from 2 to 100, not '1'"},
      {"Held", "101", "", "Held takes a whole number from 2 to 100, not '101'"},
      {"Kind", "4", "4", ""},
      {"Kind", "3", "", "Kind takes 1, 2 or 4, not '3'"},
      {"Kind", "", "", "Kind takes 1, 2 or 4, not ''"},
      {"Switch", "Yes", "1", ""},
      {"Switch", "off", "0", ""},
      {"Switch", "2", "", "Switch takes yes or no (1 or 0), not '2'"},
      {"Set", "ebu latin", "EBU Latin", ""},
      {"Set", "Latin", "", "Set takes UTF-8, Windows-1252, ISO-8859-1, RDS or EBU Latin, not 'Latin'"},
      {"Port", "65535", "65535", ""},
      {"Port", "0", "", "Port takes a whole number from 1 to 65535, not '0'"},
      {"Port", "", "", "Port takes a whole number from 1 to 65535, not ''"},
      {"Most", "", "", ""},
      {"Most", "-1", "", "Most takes a whole number from 0 on, not '-1'"},
      {"Escape", "HTML", "html", ""},
      {"Escape", "", "", ""},
      {"Escape", "htm", "", "Escape takes html, xml, json or auto, or nothing, not 'htm'"},
      {"Tekst", "", "", "a thing has no setting 'Tekst': did you mean Text?"},
      {"Own", "1", "",
       "a thing has no setting 'Own': there are Text, Number, Held, Kind, Switch, Set, Port, "
       "Most, Escape and Password"},
  };
  for (const auto& c : cases) {
    const Result<CheckedSetting> checked = CheckSetting(List(), "a thing", c.name, c.value);
    EXPECT_EQ(checked ? "" : checked.Reason(), c.reason) << c.name << "=" << c.value;
    EXPECT_EQ(checked ? checked.Value().text : "", c.stored) << c.name << "=" << c.value;
  }
}

TEST(EnteredSettings, AreStoredAsTheirTableSays) {
  MemoryHive hive;
  for (const auto& [name, value] :
       {std::pair{"Switch", "no"}, {"Set", "utf-8"}, {"Held", "7"}, {"Kind", "2"}})
    WriteSetting(hive, "K", name + std::string("4"), CheckSetting(List(), "a thing", name, value).Value());
  Things read;
  ReadSettings(hive, "K", "4", SettingTable<Things>(kRows), read);
  EXPECT_FALSE(read.Switch);
  EXPECT_EQ(read.Set, CharacterSet::kUtf8);
  EXPECT_EQ(read.Held, 7);
  EXPECT_EQ(read.Kind, 2);
  for (const SettingsValue& value : hive.Values("K"))
    EXPECT_EQ(std::holds_alternative<std::uint32_t>(value.data),
              value.name == "Switch4" || value.name == "Kind4")
        << value.name;
}

TEST(EnteredSettings, OfAServiceKeepTheirDefaultsWithinTheirRanges) {
  for (const SettingInfo& info : ServiceSettingList())
    EXPECT_TRUE(CheckSetting(ServiceSettingList(), "a service", info.name, info.byDefault)) << info.name;
}

}  // namespace
}  // namespace zeb
