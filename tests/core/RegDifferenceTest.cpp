#include <gtest/gtest.h>

#include "core/RegDifference.h"
#include "platform/simulated/MemoryHive.h"

namespace zeb {
namespace {

constexpr char kTop[] = "Software\\Hexmoor\\ZEB";

std::string Below(std::string_view part) {
  std::string key = kTop;
  return key.append(part);
}

class RegDifferenceTest : public testing::Test {
 protected:
  RegDifferenceTest() {
    hive.WriteText(kTop, "Name", "old");
    hive.WriteNumber(kTop, "Count", 2);
    hive.WriteText(Below("\\Service1"), "ServiceName", "One");
    hive.WriteText(Below("\\Service1\\File"), "NumberOutputs", "1");
    hive.CreateKey(Below("\\Empty"));
  }

  static RegChanges Parse(const std::string& body) {
    const Result<RegChanges> read = ParseRegFile("Windows Registry Editor Version 5.00\r\n\r\n" + body);
    EXPECT_TRUE(read) << read.Reason();
    return read.Value();
  }

  static std::string Text(const std::vector<RegDifference>& all) {
    const auto data = [](const std::optional<SettingsData>& value) {
      if (!value) return std::string("-");
      const auto* text = std::get_if<std::string>(&*value);
      return text ? *text : std::to_string(std::get<std::uint32_t>(*value));
    };
    std::string text;
    for (const RegDifference& one : all)
      text += std::string("+~-").substr(static_cast<std::size_t>(one.What()), 1) +
              one.key.substr(sizeof kTop - 1) + ":" + one.name.value_or("(key)") + " " + data(one.before) +
              " > " + data(one.after) + "\n";
    return text;
  }

  MemoryHive hive;
};

TEST_F(RegDifferenceTest, OnlyWhatWillBeOtherwiseIsListed) {
  const struct {
    const char *body, *differences;
  } cases[] = {
      {"[HKEY_LOCAL_MACHINE\\software\\HEXMOOR\\zeb]\r\n\"name\"=\"old\"\r\n\"count\"=dword:00000002\r\n",
       ""},
      {"[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB]\r\n\"name\"=\"new\"\r\n", "~:Name old > new\n"},
      {"[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB]\r\n\"Count\"=\"2\"\r\n", "~:Count 2 > 2\n"},
      {"[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB]\r\n\"Name\"=-\r\n\"More\"=\"x\"\r\n@=\"d\"\r\n",
       "+: - > d\n+:More - > x\n-:Name old > -\n"},
      {"[-HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Service1]\r\n",
       "-\\Service1:ServiceName One > -\n-\\Service1\\File:NumberOutputs 1 > -\n"},
      {"[-HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Service1]\r\n"
       "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Service1]\r\n\"ServiceName\"=\"One\"\r\n",
       "-\\Service1\\File:NumberOutputs 1 > -\n"},
      {"[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\New]\r\n", "+\\New:(key) - > -\n"},
      {"[-HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Empty]\r\n", "-\\Empty:(key) - > -\n"},
      {"[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Gone]\r\n\"a\"=\"b\"\r\n"
       "[-HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Gone]\r\n",
       ""},
  };
  for (const auto& one : cases) EXPECT_EQ(Text(CompareRegChanges(hive, Parse(one.body))), one.differences);
}

// What the list says is what happens: the settings before, changed as it says, are the settings after.
TEST_F(RegDifferenceTest, TheListTellsWhatApplyingDoes) {
  const RegChanges changes = Parse(
      "[-HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Service1\\File]\r\n"
      "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB]\r\n\"Name\"=\"new\"\r\n\"Count\"=-\r\n"
      "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\Service2]\r\n\"ServiceName\"=\"Two\"\r\n"
      "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB\\service2\\Web]\r\n\"x\"=dword:00000001\r\n");
  const std::vector<RegDifference> differences = CompareRegChanges(hive, changes);
  EXPECT_EQ(differences.size(), 5u);

  MemoryHive told;
  WriteSettingsTree(told, kTop, ReadSettingsTree(hive, kTop));
  for (const RegDifference& one : differences) {
    EXPECT_EQ(one.before.has_value(), one.What() != RegDifference::Kind::kAdded);
    if (one.after)
      WriteSettingsValue(told, one.key, {*one.name, *one.after});
    else
      told.DeleteValue(one.key, *one.name);
  }
  ASSERT_TRUE(ApplyRegChanges(hive, changes));
  told.DeleteKey(Below("\\Service1\\File"));  // left without values
  EXPECT_EQ(ExportRegFile(told, kTop), ExportRegFile(hive, kTop));
  EXPECT_TRUE(CompareRegChanges(hive, changes).empty()) << "nothing is left to be done";
}

}  // namespace
}  // namespace zeb
