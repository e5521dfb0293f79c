#include <gtest/gtest.h>

#include "core/PropertySheet.h"

namespace zeb {
namespace {

struct Draft {
  std::string name = "a";
  std::int32_t port = 80;
  bool on = false;
  CharacterSet set = CharacterSet::kRds;
};
constexpr SettingRow<Draft> kRows[] = {
    {"Name", &Draft::name},
    {.name = "Port", .member = &Draft::port, .entry = kPortEntry},
    {"On", &Draft::on},
    {"Set", &Draft::set},
};
constexpr SettingTable<Draft> kTable = kRows;
constexpr FieldText kFields[] = {{.name = "Name", .caption = "&Name:"},
                                 {.name = "Port", .caption = "Port:", .enabledBy = "On"},
                                 {.name = "On", .caption = "Switched on"},
                                 {.name = "Set", .caption = "Set:"}};

class PropertySheetTest : public testing::Test {
 protected:
  PropertySheetTest() { AddFields(sheet, kTable, draft, kFields); }
  Draft draft;
  PropertySheet sheet;
};

TEST_F(PropertySheetTest, FieldsAreOfTheKindOfTheirSettings) {
  EXPECT_EQ(sheet.Find("Name")->kind, FieldKind::kText);
  EXPECT_EQ(sheet.Find("Port")->kind, FieldKind::kNumber);
  EXPECT_EQ(sheet.Find("On")->kind, FieldKind::kSwitch);
  EXPECT_EQ(sheet.Find("Set")->kind, FieldKind::kChoice);
  EXPECT_EQ(sheet.Find("Set")->choices.size(), kCharacterSets.size());
  EXPECT_EQ(sheet.Find("Set")->stored, "RDS");
  EXPECT_EQ(sheet.Find("None"), nullptr);
  EXPECT_THROW(AddField(sheet, kTable, draft, {.name = "None"}), std::logic_error);
}

TEST_F(PropertySheetTest, AllIsTakenOrNothing) {
  const auto problem = Enter(sheet, {{"Name", "b"}, {"Port", "0"}, {"On", "1"}});
  ASSERT_TRUE(problem);
  EXPECT_EQ(problem->field, "Port");
  EXPECT_EQ(problem->text, "Port takes a whole number from 1 to 65535, not '0'");
  EXPECT_EQ(draft.name, "a");
  EXPECT_FALSE(Enter(sheet, {{"Name", "b"}, {"Port", "81"}, {"On", "1"}, {"Set", "UTF-8"}}));
  EXPECT_EQ(draft.name, "b");
  EXPECT_EQ(draft.port, 81);
  EXPECT_TRUE(draft.on);
  EXPECT_EQ(draft.set, CharacterSet::kUtf8);
}

TEST_F(PropertySheetTest, AFieldThatMayNotBeUsedKeepsWhatItHad) {
  EXPECT_FALSE(Enter(sheet, {{"Port", "x"}, {"On", "0"}}));
  EXPECT_EQ(draft.port, 80);
  EXPECT_FALSE(Enter(sheet, {{"Port", "81"}, {"On", "0"}})) << "what can be is taken";
  EXPECT_EQ(draft.port, 81);
}

TEST_F(PropertySheetTest, WhatIsStoredAndNotChangedIsNotAskedFor) {
  Draft odd;
  odd.port = -5;
  PropertySheet of;
  AddFields(of, kTable, odd, kFields);
  EXPECT_FALSE(Enter(of, {{"Name", "b"}, {"Port", "-5"}, {"On", "1"}}));
  EXPECT_EQ(odd.port, -5);
}

TEST_F(PropertySheetTest, WhatWasEnteredFirstCanBeTakenBack) {
  EXPECT_FALSE(Enter(sheet, {{"Name", "b"}}));
  EXPECT_FALSE(Enter(sheet, {{"Name", "a"}}));
  EXPECT_EQ(draft.name, "a");
}

TEST_F(PropertySheetTest, ASheetsOwnCheckComesFirst) {
  sheet.check = [](const Entries& entries) -> std::optional<SheetProblem> {
    if (EntryOf(entries, "Name") == "a") return std::nullopt;
    return SheetProblem{"only a", MessageIcon::kWarning, "Name"};
  };
  const auto problem = Enter(sheet, {{"Name", "b"}, {"Port", "x"}, {"On", "1"}});
  ASSERT_TRUE(problem);
  EXPECT_EQ(problem->text, "only a");
  EXPECT_EQ(Enter(sheet, {{"Name", "a"}, {"Port", "x"}, {"On", "1"}})->field, "Port");
}

TEST(PropertyFieldTest, IsEnabledByASwitchOrAValue) {
  PropertyField field;
  EXPECT_TRUE(IsEnabled(field, {}));
  field.enabledBy = "On";
  EXPECT_TRUE(IsEnabled(field, {{"On", "1"}}));
  EXPECT_FALSE(IsEnabled(field, {{"On", "0"}}));
  EXPECT_FALSE(IsEnabled(field, {}));
  field.enabledBy = "Type=11|12";
  EXPECT_TRUE(IsEnabled(field, {{"Type", "12"}}));
  EXPECT_FALSE(IsEnabled(field, {{"Type", "1"}}));
}

TEST(PropertyFieldTest, ACaptionIsPlainWithoutItsLetterAndEnd) {
  EXPECT_EQ(PlainCaption("&Escape values for:"), "Escape values for");
  EXPECT_EQ(PlainCaption("&Source File ..."), "Source File");
  EXPECT_EQ(PlainCaption(""), "");
}

}  // namespace
}  // namespace zeb
