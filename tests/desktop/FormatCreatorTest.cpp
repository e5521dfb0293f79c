#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTreeWidget>
#include <chrono>
#include <optional>

#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/TemplateTextEdit.h"
#include "dialogs/TemplateBuilder.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;

class FormatCreatorTest : public DesktopTest {
 protected:
  void SetUp() override {
    Station("Demo FM", {{"TolvanTCPControlPort", "0"}});
    Load();
    Send(1, "SET_CURRENT_ITEM ITitle=\"Waterloo\" Artist1=\"ABBA\" IType=7");
  }
  void OpenWith(const std::string& text, bool withStation = true) {
    OpenFormatCreator(desk, nullptr, withStation ? main.Window(1) : nullptr, text,
                      [this](const std::string& given) { taken = given; });
    Settle();
  }
  QTreeWidget& Fields() { return *dynamic_cast<QTreeWidget*>(Named("Fields")); }
  TemplateTextEdit& Format() { return *dynamic_cast<TemplateTextEdit*>(Named("FormatString")); }
  std::string Result() { return dynamic_cast<QLabel*>(Named("Result"))->text().toStdString(); }
  QTreeWidgetItem* Field(const char* name) {
    for (QTreeWidgetItem* item : Fields().findItems(name, Qt::MatchExactly)) return item;
    return nullptr;
  }
  void Choose(const char* list, int index) {
    dynamic_cast<QComboBox*>(Named(list))->setCurrentIndex(index);
    Settle();
  }
  QWidget* Dialog() { return Named("FormatCreator"); }

  std::optional<std::string> taken;
};

TEST_F(FormatCreatorTest, OffersEachSlotsFieldsWithTheirPresentValues) {
  OpenWith("");
  EXPECT_EQ(Dialog()->windowTitle(), "Format Creator");
  EXPECT_EQ(Fields().topLevelItemCount(), 48);
  EXPECT_EQ(Field("ItemName")->text(1), "Waterloo");
  Choose("Slot", 2);
  EXPECT_EQ(Field("ItemName")->text(1), "");
  Choose("Slot", 4);
  EXPECT_EQ(Fields().topLevelItemCount(), 9);
  EXPECT_EQ(Field("LastUpdateNumber")->text(1), "Unknown tag LastUpdateNumber") << "as it would be published";
  EXPECT_EQ(dynamic_cast<QLabel*>(Named("HelpText"))->text().toStdString(), kBuilderHelp);
}

TEST_F(FormatCreatorTest, AddReplacesTheSelection) {
  OpenWith("ab");
  Format().selectAll();
  Fields().setCurrentItem(Field("Artists"));
  Choose("Slot", 2);
  Fields().setCurrentItem(Field("Artists"));
  Press("Add", Dialog());
  EXPECT_EQ(Format().Text(), "<ZEB_PREVIOUS_Artists>");
  Fields().setCurrentItem(Field("--------------------"));
  Press("Add", Dialog());
  EXPECT_EQ(Format().Text(), "<ZEB_PREVIOUS_Artists>") << "a line of dashes is no field";

  Fields().scrollToItem(Field("ItemName"));
  const QPoint place = Fields().visualItemRect(Field("ItemName")).center();
  QTest::mouseClick(Fields().viewport(), Qt::LeftButton, {}, place);
  QTest::mouseDClick(Fields().viewport(), Qt::LeftButton, {}, place);
  EXPECT_EQ(Format().Text(), "<ZEB_PREVIOUS_Artists><ZEB_PREVIOUS_ItemName>");
  QTest::keyClick(&Fields(), Qt::Key_Insert);
  QTest::keyClick(&Fields(), Qt::Key_Return);
  EXPECT_EQ(Format().Text().size(),
            std::string("<ZEB_PREVIOUS_Artists>").size() + 3 * std::string("<ZEB_PREVIOUS_ItemName>").size());
  EXPECT_FALSE(taken) << "the return key in the list is not the dialog's";
}

TEST_F(FormatCreatorTest, TheSearchNarrowsTheFields) {
  OpenWith("");
  Type("Search", "title");
  Settle();
  int shown = 0;
  for (int row = 0; row < Fields().topLevelItemCount(); ++row)
    if (!Fields().topLevelItem(row)->isHidden()) ++shown;
  EXPECT_EQ(shown, 3) << "TitleID and two of copyright";
  Press("Add", Dialog());
  EXPECT_EQ(Format().Text(), "<ZEB_NOW_TitleID>");
  Type("Search", "nothing of the kind");
  Press("Add", Dialog());
  EXPECT_EQ(Format().Text(), "<ZEB_NOW_TitleID>") << "what is not seen is not added";
}

TEST_F(FormatCreatorTest, TheResultFollowsAMomentAfterTheLastKey) {
  OpenWith("");
  Pass(milliseconds(150));
  QTest::keyClicks(&Format(), "<ZEB_NOW_ITEMNAME");
  Pass(milliseconds(149));
  QTest::keyClicks(&Format(), ">");
  Pass(milliseconds(149));
  EXPECT_EQ(Result(), "→ \"\"   0 characters");
  Pass(milliseconds(1));
  EXPECT_EQ(Result(), "→ \"Waterloo\"   8 characters");
  Choose("PreviewItem", 1);
  EXPECT_EQ(Result(), "→ \"Paper Moons\"   11 characters");
  EXPECT_EQ(Field("ItemName")->text(1), "Paper Moons");
  Choose("PreviewItem", 2);
  EXPECT_EQ(Result(), "→ \"Harbour Bakery\"   14 characters");
  Choose("PreviewItem", 3);
  EXPECT_EQ(Result(), "→ \"\"   0 characters");
}

TEST_F(FormatCreatorTest, TheResultFollowsThePresentItem) {
  OpenWith("<ZEB_NOW_ITEMNAME>");
  Pass(milliseconds(150));
  Send(1, "SET_CURRENT_ITEM ITitle=\"<b>Next &one</b>\" IType=7");
  Pass(std::chrono::seconds(1));
  EXPECT_EQ(Result(), "→ \"<b>Next &one</b>\"   16 characters");
  EXPECT_EQ(Field("ItemName")->text(1), "<b>Next &one</b>");
  main.RemoveService(1);
  Settle();
  Press("Yes");
  Pass(std::chrono::seconds(10));
  QTest::keyClicks(&Format(), "x");
  Pass(milliseconds(150));
  EXPECT_EQ(Result(), "→ \"Paper Moonsx\"   12 characters") << "the service has gone";
}

TEST_F(FormatCreatorTest, OkRefusesWhatIsUnbalanced) {
  const std::string noStart =
      "You cannot have a ']' (condition end) without a matching '[' (condition start)";
  const std::string noEnd = "You cannot have a '[' (condition start) without a matching ']' (condition end)";
  struct Case {
    const char* text;
    std::string box;
    int caret;
  };
  const Case cases[] = {{"𝄞a]", noStart, 3},
                        {"a[b", noEnd, 1},
                        {"[[", noEnd, 0},
                        {"[a[b]]", noEnd + "\nYou cannot nest condition statements.", 2}};
  for (const Case& c : cases) {
    OpenWith(c.text);
    Press("OK", Dialog());
    EXPECT_EQ(BoxText(), c.box) << c.text;
    EXPECT_EQ(Box()->icon(), QMessageBox::Warning);
    EXPECT_EQ(Format().textCursor().position(), c.caret) << c.text;
    EXPECT_FALSE(taken);
    Press("OK");
    EXPECT_TRUE(Dialog()->isVisible()) << "the dialog stays";
    Press("Cancel", Dialog());
    EXPECT_FALSE(taken) << "and Cancel changes nothing";
  }
}

TEST_F(FormatCreatorTest, OkGivesTheTextBackAsItIs) {
  for (const std::string text : {"", "a\r\n[b] 𝄞\xC2\xA0", "[(<ZEB_NOW_ITEMTYPE>=Song)x]"}) {
    taken.reset();
    OpenWith(text, false);
    Press("OK", Dialog());
    EXPECT_EQ(taken, text);
  }
}

TEST_F(FormatCreatorTest, WarnsOfWhatDoesSomethingElseThanItSeems) {
  OpenWith("");
  QTest::keyClicks(&Format(), "<ZEB_PREVIOUS2_ITEMNAME>");
  EXPECT_EQ(dynamic_cast<QLabel*>(Named("Remarks"))->text(),
            "△ line 1: 'PREVIOUS2': its number counts for nothing; numbers stand behind NEXT and PREV only");
  Press("OK", Dialog());
  EXPECT_EQ(taken, "<ZEB_PREVIOUS2_ITEMNAME>") << "but does not refuse it";
}

}  // namespace
}  // namespace zeb
