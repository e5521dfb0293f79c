#include <QPushButton>
#include <optional>

#include "tests/desktop/DesktopTest.h"

namespace zeb {
namespace {

class BoxesTest : public DesktopTest {};

TEST_F(BoxesTest, AMessageThatIsOpenIsNotOpenedAgain) {
  for (int i = 0; i < 3; ++i) environment.person.Show(MessageIcon::kWarning, "The username is blank");
  Settle();
  ASSERT_EQ(AllBoxes().size(), 1u);
  EXPECT_EQ(BoxText(), "The username is blank");
  EXPECT_EQ(Box()->icon(), QMessageBox::Warning);
  Press("OK");
  EXPECT_EQ(Box(), nullptr);
  environment.person.Show(MessageIcon::kWarning, "The username is blank");
  Settle();
  EXPECT_EQ(AllBoxes().size(), 1u);
  EXPECT_EQ(console.shown.size(), 4u) << "each is in the journal";
}

TEST_F(BoxesTest, AQuestionIsAnsweredNoUnlessYesIsPressed) {
  for (const char* press : {"Yes", "No", ""}) {
    std::optional<bool> answer;
    environment.person.Ask("Are you sure?", [&](bool yes) { answer = yes; });
    EXPECT_EQ(Box(), nullptr) << "whoever asks may be in the middle of something";
    Settle();
    ASSERT_NE(Box(), nullptr);
    EXPECT_EQ(Box()->icon(), QMessageBox::Question);
    EXPECT_EQ(Box()->defaultButton()->text(), "&No");
    EXPECT_FALSE(answer);
    if (*press != '\0') {
      Press(press);
    } else {
      Box()->close();
      Settle();
    }
    EXPECT_EQ(answer, press == std::string("Yes")) << press;
  }
}

TEST_F(BoxesTest, TitlesAreNoMarkup) {
  environment.person.Show(MessageIcon::kInformation, "<b>bold</b>");
  Settle();
  EXPECT_EQ(Box()->textFormat(), Qt::PlainText);
}

}  // namespace
}  // namespace zeb
