#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTest>

#include "app/desktop/dialogs/Dialogs.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {
namespace {

class ManualDialogTest : public DesktopTest {
 protected:
  void SetUp() override {
    Station("Demo FM", {{"TolvanTCPControlPort", "0"}});
    Load();
    carts.carts[12] = {{"Harbour Report", "Ines Calder", ""}, "StNotes=\"Read live\""};
    carts.carts[7] = {{"Only a title", "", ""}, ""};
  }
  void OpenDialog() {
    OpenManualEntry(desk, main.Window(1));
    Settle();
  }
  QWidget* Dialog() { return Named("ManualEntry"); }
  std::string Text(const char* name) { return dynamic_cast<QLineEdit*>(Named(name))->text().toStdString(); }
  std::string Notes() { return dynamic_cast<QPlainTextEdit*>(Named("Notes"))->toPlainText().toStdString(); }
  void Choose(const char* name, int index) { dynamic_cast<QComboBox*>(Named(name))->setCurrentIndex(index); }
  clsZEBService& Service() { return main.Window(1)->service(); }
};

TEST_F(ManualDialogTest, OpensWithPresenterAndShow) {
  Send(1, "SET_PRESENTER Presenter=\"NC\" Fullname=\"Nell <i>Carver</i>\"");
  Send(1, "SET_SHOW Show=\"17\" Title=\"Drive & Time\"");
  OpenDialog();
  EXPECT_EQ(Dialog()->windowTitle(), "Update ZEB");
  EXPECT_EQ(Text("PresenterReference"), "NC");
  EXPECT_EQ(Text("PresenterFullName"), "Nell <i>Carver</i>");
  EXPECT_EQ(Text("ShowReference"), "17");
  EXPECT_EQ(Text("ShowTitle"), "Drive & Time");
  EXPECT_EQ(dynamic_cast<QComboBox*>(Named("Slot"))->count(), 6);
  EXPECT_EQ(dynamic_cast<QComboBox*>(Named("ItemType"))->count(), 5);
}

TEST_F(ManualDialogTest, UpdateSendsWhatIsEnteredAndTheDialogStays) {
  OpenDialog();
  Type("ItemName", "  Say \"hello\" = {now} ");
  Type("Artist", "ABBA");
  Type("Notes", "two");
  QTest::keyClick(Named("Notes"), Qt::Key_Return);
  Type("Notes", "lines");
  Type("PresenterFullName", "without a reference");
  Type("ShowReference", "9");
  Type("ShowTitle", "Evening");
  Choose("ItemType", 2);
  Press("Update", Dialog());
  EXPECT_EQ(Service().CurrentItem()->ItemName, "Say \"hello\" = {now}");
  EXPECT_EQ(Service().CurrentItem()->Artist1Name, "ABBA");
  EXPECT_EQ(Service().CurrentItem()->Notes, "two\nlines");
  EXPECT_EQ(Service().CurrentItem()->ItemType, 4);
  EXPECT_EQ(Service().PresenterFullName, "") << "no reference, no presenter";
  EXPECT_EQ(Service().ShowTitle, "Evening");
  EXPECT_TRUE(Dialog()->isVisible());
  Press("Update", Dialog());
  EXPECT_EQ(Box(), nullptr) << "the same again is dropped silently";

  Choose("Slot", 1);
  Type("ItemName", "Next one");
  QTest::keyClick(Named("ItemName"), Qt::Key_Return);
  Settle();
  EXPECT_EQ(Service().NextItem(1)->Fields().ItemName, "Next one");
  Choose("Slot", 4);
  Type("ItemName", "");
  QTest::keyClick(Named("ItemName"), Qt::Key_Delete);
  Type("Artist", "");
  QTest::keyClick(Named("Artist"), Qt::Key_Delete);
  Press("Update", Dialog());
  EXPECT_EQ(Service().CurrentItem()->ItemName, "Next one");
  EXPECT_EQ(Service().NextItem(1)->Fields().ItemName, "");
}

TEST_F(ManualDialogTest, OkAndCancelOnlyClose) {
  for (const char* button : {"OK", "Cancel"}) {
    OpenDialog();
    Type("ItemName", "Not sent");
    Press(button, Dialog());
    EXPECT_EQ(Open<QDialog>(), nullptr);
    EXPECT_EQ(Service().CurrentItem()->ItemName, "");
  }
}

TEST_F(ManualDialogTest, ACartIsCopied) {
  OpenDialog();
  Type("CartNumber", "12");
  Press("Copy Cart", Dialog());
  EXPECT_EQ(Text("ItemName"), "Harbour Report");
  EXPECT_EQ(Text("Artist"), "Ines Calder");
  EXPECT_EQ(Notes(), "Read live");
  for (const char* none : {"13", "0", "-12", "12x", "x", " "}) {
    Type("CartNumber", none);
    Press("Copy Cart", Dialog());
    EXPECT_EQ(Text("ItemName"), "Harbour Report") << none;
    EXPECT_EQ(Box(), nullptr) << none;
  }
  Press("Choose...", Dialog());
  Press("OK", Named("Carts")->window());
  EXPECT_EQ(Text("CartNumber"), "7") << "the first of the list";
  Press("Copy Cart", Dialog());
  EXPECT_EQ(Text("ItemName"), "Only a title");
  EXPECT_EQ(Text("Artist"), "Ines Calder") << "what the cart does not have stays";
}

TEST_F(ManualDialogTest, AServiceThatHasGoneIsTold) {
  OpenDialog();
  Type("ItemName", "Too late");
  main.RemoveService(1);
  Settle();
  Press("Yes");
  Pass(std::chrono::seconds(10));
  Press("Update", Dialog());
  EXPECT_EQ(BoxText(), "This Service has been removed meanwhile");
  Press("OK");
}

}  // namespace
}  // namespace zeb
