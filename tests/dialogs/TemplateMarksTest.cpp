#include <gtest/gtest.h>

#include "core/clsZEBItemInfo.h"
#include "dialogs/TemplateBuilder.h"
#include "dialogs/TemplateMarks.h"
#include "dialogs/TemplatePreview.h"

namespace zeb {
namespace {

// The marks as "kind:text", blanks between them.
std::string Drawn(const std::string& text) {
  static constexpr const char* kKinds[] = {"tag", "section", "condition", "unknown", "unmatched"};
  std::string drawn;
  for (const TemplateMark& mark : MarkTemplate(text).marks) {
    if (!drawn.empty()) drawn += ' ';
    drawn += std::string(kKinds[static_cast<int>(mark.kind)]) + ":" + text.substr(mark.start, mark.length);
  }
  return drawn;
}

std::string FirstRemark(const std::string& text) {
  const TemplateMarks marks = MarkTemplate(text);
  if (marks.remarks.empty()) return "";
  std::string remark(marks.remarks[0].text);
  if (const std::size_t at = remark.find("%1"); at != std::string::npos)
    remark.replace(at, 2, marks.remarks[0].what);
  return std::to_string(marks.remarks[0].line) + ": " + remark;
}

TEST(TemplateMarksTest, TagsAndSectionsAreFoundAsTheyAreExpanded) {
  EXPECT_EQ(Drawn("𝄞 <ZEB_NOW_ITEMNAME> x"), "tag:<ZEB_NOW_ITEMNAME>");
  EXPECT_EQ(Drawn("[(<ZEB_NOW_ITEMTYPE>=Song)a]"),
            "section:[ section:] condition:(<ZEB_NOW_ITEMTYPE>=Song) tag:<ZEB_NOW_ITEMTYPE>");
  EXPECT_EQ(Drawn("<<ZEB_NOW_ITEMNAME> <b>"), "") << "protected, and no tag";
}

TEST(TemplateMarksTest, WhatIsWrongIsSaidWithItsLine) {
  struct Case {
    const char *text, *remark;
  };
  const Case cases[] = {
      {"fine <ZEB_NEXT50_ITEMNAME> <ZEB_PREV2_Artists> <ZEB_SIMPLETEXT> <ZEB_SPECIAL_NOW_HH:NN>", ""},
      {"[(<ZEB_NOW_ITEMTYPE>=Song)a][(<ZEB_SPECIAL_SHOWTITLE>!=)b][(<ZEB_NEXT_CARTNUMBER>=0)c]", ""},
      {"a\nb]", "2: ']' without a matching '['"},
      {"a\n\n[", "3: '[' without a matching ']'"},
      {"[a[b]]", "1: '[' inside another section: sections cannot be nested"},
      {"<ZEB_NOW_ITEMNAME", "1: '<' without a matching '>'"},
      {"<ZEB_THEN_ITEMNAME>", "1: There is no 'THEN': the tag is published without its brackets"},
      {"<ZEB_NEXT51_ITEMNAME>", "1: There is no 'NEXT51': the tag is published without its brackets"},
      {"<ZEB_Now_ITEMNAME>", "1: 'Now' must be written in capitals"},
      {"<ZEB_Special_SHOWTITLE>", "1: 'Special' must be written in capitals"},
      {"<ZEB_NOW_TITEL>", "1: An item has no 'TITEL': nothing is published in its place"},
      {"<ZEB_SPECIAL_LastUpdateNumber>", "1: 'Unknown tag LastUpdateNumber' is published in its place"},
      {"<ZEB_PREVIOUS2_ITEMNAME>",
       "1: 'PREVIOUS2': its number counts for nothing; numbers stand behind NEXT and PREV only"},
      {"<ZEB_NOW_PictureFileName>",
       "1: 'PictureFileName' is the full name as it was given, and the picture is not sent along: write "
       "PICTUREFILENAME"},
      {"[(<ZEB_NOW_ARTISTS>=Abba)x]", "1: Only a value written in capitals can equal 'ABBA'"},
      {"[(<ZEB_NOW_ITEMTYPE>=Musik)x]", "1: No type of item is called 'MUSIK'"},
      {"[(<ZEB_SPECIAL_SERVICENAME>!=)x]", "1: 'SERVICENAME' cannot be tested: the section never appears"},
      {"[(<ZEB_THEN_ITEMNAME>!=)x]", "1: There is no 'THEN': the condition is published as it stands"},
      {"[(<ZEB_NOW_ITEMNAME>!=x]", "1: A condition without a ')' after its tag"},
  };
  for (const Case& c : cases) EXPECT_EQ(FirstRemark(c.text), c.remark) << c.text;
}

TEST(TemplateMarksTest, WhatTheBuilderOffersIsKnownButForWhatIsNeverPublished) {
  std::vector<std::string> unknown;
  for (const BuilderSlot slot : {BuilderSlot::kNow, BuilderSlot::kSpecial})
    for (const std::string_view field : BuilderFields(slot)) {
      const std::string tag = BuilderInsertion(slot, field);
      if (!tag.empty() && !MarkTemplate(tag).remarks.empty()) unknown.emplace_back(field);
    }
  EXPECT_EQ(unknown,
            (std::vector<std::string>{"CustomField1", "CustomField2", "CustomField3", "PictureFileName",
                                      "DABNotesRTF", "NotesRTF", "LastUpdateNumber"}));
}

TEST(TemplateMarksTest, IsBounded) {
  std::string many;
  while (many.size() + 20 < kMostMarkedBytes) many += "<ZEB_NOW_X>";
  const TemplateMarks marks = MarkTemplate(many);
  EXPECT_EQ(marks.marks.size(), kMostMarks);
  EXPECT_EQ(marks.remarks.size(), kMostRemarks);
  EXPECT_FALSE(marks.tooLong);
  EXPECT_TRUE(MarkTemplate(std::string(kMostMarkedBytes + 1, '[')).tooLong);
}

TEST(TemplatePreviewTest, SamplesMakeDifferentTexts) {
  const std::string text =
      "[(<ZEB_NOW_ITEMTYPE>=Song)<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>]"
      "[(<ZEB_NOW_ITEMTYPE>=Advert)ad]\r\n<ZEB_SPECIAL_SHOWTITLE>";
  const auto result = [&](PreviewItem item) {
    return PreviewTemplate(text, *SampleSnapshot(item, {}))->text;
  };
  EXPECT_EQ(result(PreviewItem::kSong), "Paper Moons by Ada Quill↵Drive Time");
  EXPECT_EQ(result(PreviewItem::kAdvert), "ad↵Drive Time");
  EXPECT_EQ(result(PreviewItem::kEmpty), "↵");
}

TEST(TemplatePreviewTest, IsBounded) {
  const SnapshotPtr items = SampleSnapshot(PreviewItem::kSong, {});
  const auto result = PreviewTemplate(std::string(1000, 'x'), *items);
  EXPECT_EQ(result->characters, 1000u);
  EXPECT_EQ(result->text, std::string(kMostResultCharacters, 'x'));
  EXPECT_TRUE(PreviewTemplate(std::string(kMostPreviewedBytes, 'x'), *items));
  EXPECT_FALSE(PreviewTemplate(std::string(kMostPreviewedBytes + 1, 'x'), *items));
}

}  // namespace
}  // namespace zeb
