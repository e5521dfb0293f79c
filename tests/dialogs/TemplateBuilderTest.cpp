#include <gtest/gtest.h>

#include "dialogs/TemplateBuilder.h"

namespace zeb {
namespace {

TEST(TemplateBuilder, OffersAndInsertsFields) {
  EXPECT_EQ(BuilderFields(BuilderSlot::kPrevious).size(), 16U + 1U + 31U);
  EXPECT_EQ(BuilderInsertion(BuilderSlot::kPrevious, "ItemName"), "<ZEB_PREVIOUS_ItemName>");
  EXPECT_EQ(BuilderInsertion(BuilderSlot::kNow, BuilderFields(BuilderSlot::kNow)[16]), "");
  EXPECT_EQ(BuilderInsertion(BuilderSlot::kSpecial, BuilderFields(BuilderSlot::kSpecial)[2]),
            "<ZEB_SPECIAL_Now_DDDD,DD MMM YYYY HH:NN>");
}

TEST(TemplateBuilder, BackspaceTakesAWholeTag) {
  const std::string_view text = "a <b> <ZEB_NOW_ItemName> b>";
  EXPECT_EQ(TagBeforeCaret(text, 24), 6U);
  EXPECT_EQ(TagBeforeCaret(text, 5), 2U);
  EXPECT_EQ(TagBeforeCaret(text, 23), std::nullopt);
  EXPECT_EQ(TagBeforeCaret(text, 0), std::nullopt);
  EXPECT_EQ(TagBeforeCaret("a>", 2), std::nullopt);
}

TEST(TemplateBuilder, SectionsMustBeBalancedAndNotNested) {
  for (const char* good : {"", "plain", "[]", "a[b]c[d]"}) EXPECT_EQ(SectionProblem(good), "") << good;
  for (const char* noStart : {"]", "[a]]", "]["})
    EXPECT_TRUE(SectionProblem(noStart).starts_with("You cannot have a ']'")) << noStart;
  for (const char* noEnd : {"[", "[a][", "[[a"}) {
    EXPECT_TRUE(SectionProblem(noEnd).starts_with("You cannot have a '['")) << noEnd;
    EXPECT_EQ(SectionProblem(noEnd).find('\n'), std::string_view::npos) << noEnd;
  }
  EXPECT_TRUE(SectionProblem("[a[b]]").ends_with("(condition end)\nYou cannot nest condition statements."));
}

}  // namespace
}  // namespace zeb
