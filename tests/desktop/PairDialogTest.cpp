#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>
#include <optional>

#include "app/desktop/dialogs/PairDialog.h"
#include "app/desktop/dialogs/PairGrid.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {
namespace {

using clsPair = clsFileParameters;
constexpr auto kFile = FileParametersMode::kFile, kWeb = FileParametersMode::kWeb;

clsPair Pair(const std::string& source, const std::string& destination) {
  clsPair pair;
  pair.SetSourceFileName(source);
  pair.SetDestinationFileName(destination);
  return pair;
}

std::string AsText(const clsPair& pair) {
  return PairsText({pair});
}

class PairDialogTest : public DesktopTest {
 protected:
  void OpenWith(const clsPair& pair, FileParametersMode mode = kFile) {
    taken.reset();
    OpenPairDialog(desk, nullptr, nullptr, mode, pair, [this](const clsPair& given) { taken = given; });
    Settle();
  }
  QWidget* Dialog() { return Named("FileParameters"); }
  QCheckBox& Tick(const char* name) { return *dynamic_cast<QCheckBox*>(Named(name)); }
  QLineEdit& Line(const char* name) { return *dynamic_cast<QLineEdit*>(Named(name)); }
  std::string Focused() { return Dialog()->focusWidget()->objectName().toStdString(); }

  std::optional<clsPair> taken;
};

TEST_F(PairDialogTest, WhatIsNotTouchedComesBackAsItWas) {
  clsPair odd = Pair("t-ä 𝄞.htm", "w-now.htm");
  odd.UseUpdateRules = true;
  odd.UpdateRulesFlags = 8 | 64;  // and a bit of some other program
  odd.UpdateRulesUsingItem = 7;
  odd.RefreshTagSeconds = -5;
  odd.AddNoCache = false;
  odd.UseMultipleVersions = true;
  odd.SimpleTextFormat = "one\r\ntwo\xC2\xA0";
  odd.EscapeValues = "JSON";
  odd.VerifyURL = "http://radio.example/now.htm ";
  for (const clsPair& pair : {Pair("t-a", "w-a"), odd}) {
    OpenWith(pair);
    Press("OK", Dialog());
    ASSERT_TRUE(taken) << BoxText();
    EXPECT_EQ(AsText(*taken), AsText(pair));
  }
}

TEST_F(PairDialogTest, TakesWhatIsEntered) {
  OpenWith({});
  EXPECT_EQ(Dialog()->windowTitle(), "File Parameters:");
  EXPECT_TRUE(Tick("AddNoCache").isChecked());
  Type("SourceFileName", "t-page.htm");
  Type("DestinationFileName", "w-page.htm");
  Tick("UseUpdateRules").click();
  Tick("UpdateIfSong").click();
  Tick("UpdateIfUnknown").click();
  dynamic_cast<QComboBox*>(Named("UpdateRulesUsingItem"))->setCurrentIndex(3);
  Tick("AddNoCache").click();
  Tick("RefreshTag").click();
  Type("RefreshTagSeconds", "60");
  Tick("UseMultipleVersions").click();
  dynamic_cast<QComboBox*>(Named("EscapeValues"))->setCurrentIndex(1);
  Press("OK", Dialog());
  ASSERT_TRUE(taken) << BoxText();
  clsPair expected = Pair("t-page.htm", "w-page.htm");
  expected.UseUpdateRules = true;
  expected.UpdateRulesFlags = 8 | 32;
  expected.UpdateRulesUsingItem = 3;
  expected.AddNoCache = false;
  expected.RefreshTagSeconds = 60;
  expected.UseMultipleVersions = true;
  expected.EscapeValues = "html";
  EXPECT_EQ(AsText(*taken), AsText(expected));
}

TEST_F(PairDialogTest, TheRulesAreAliveOnlyWhenTheyAreUsed) {
  OpenWith({}, kWeb);
  EXPECT_EQ(Tick("UseUpdateRules").text(), "Only update this Page according to the following rules:");
  for (const char* name : {"UpdateRulesUsingItem", "UpdateIfAdvert", "UpdateIfUnknown"})
    EXPECT_FALSE(Named(name)->isEnabled()) << name;
  Tick("UseUpdateRules").click();
  EXPECT_TRUE(Named("UpdateIfAdvert")->isEnabled());
  EXPECT_TRUE(Tick("WhenNoItem").isChecked()) << "always so";
  EXPECT_FALSE(Tick("WhenNoItem").isEnabled());
  EXPECT_FALSE(Named("RefreshTagSeconds")->isEnabled());
}

TEST_F(PairDialogTest, OkChecksInOrderAndShowsTheFieldAtFault) {
  const std::string seconds =
      "You can only give a number from 1 to 3600 seconds (1 Hour) for the Auto-Refresh";
  struct Case {
    FileParametersMode mode;
    const char *source, *destination, *refresh, *box, *focus;
  };
  const Case cases[] = {
      {kWeb, "", "a\\b", "3601", seconds.c_str(), "RefreshTagSeconds"},
      {kFile, "t-a", "w-a", "", seconds.c_str(), "RefreshTagSeconds"},
      {kWeb, "", "a\\b", nullptr,
       "You cannot use the \"\\\" character in the destination file name.\nWeb/WAP servers use a \"/\" "
       "instead",
       "DestinationFileName"},
      {kFile, "", "", nullptr, "You must choose a Source File to use.", "SourceFileName"},
      {kWeb, "", "/a", nullptr, "You must choose a Source Page to use.", "SourceFileName"},
      {kFile, "t-a", "t-a", nullptr,
       "The Source and Destination filenames cannot be the same in the same directory.",
       "DestinationFileName"},
      {kFile, "t-a", "", nullptr, "You must choose an Destination File to use.", "DestinationFileName"},
      {kWeb, "/t/a", "", nullptr, "You must choose an Destination Page to use.", "DestinationFileName"},
  };
  for (const Case& c : cases) {
    OpenWith({}, c.mode);
    Type("SourceFileName", c.source);
    Type("DestinationFileName", c.destination);
    if (c.refresh != nullptr) {
      Tick("RefreshTag").click();
      Type("RefreshTagSeconds", c.refresh);
    }
    Press("OK", Dialog());
    EXPECT_EQ(BoxText(), c.box);
    ASSERT_NE(Box(), nullptr) << c.box;
    EXPECT_EQ(Box()->icon(), QMessageBox::Information);
    Press("OK");
    EXPECT_FALSE(taken);
    EXPECT_EQ(Focused(), c.focus) << c.box;
    Press("Cancel", Dialog());
  }
}

TEST_F(PairDialogTest, AWordThatIsNoEscapeIsRefused) {
  OpenWith(Pair("t-a", "w-a"));
  auto* escape = dynamic_cast<QComboBox*>(Named("EscapeValues"));
  escape->lineEdit()->selectAll();
  QTest::keyClicks(escape->lineEdit(), "csv");
  Press("OK", Dialog());
  EXPECT_EQ(BoxText(), "Values can be escaped as html, xml, json or auto, or not at all");
  Press("OK");
  EXPECT_FALSE(taken);
}

TEST_F(PairDialogTest, BrowsingOffersTheKindsOfPages) {
  OpenWith({}, kWeb);
  for (const auto* button : Dialog()->findChildren<QAbstractButton*>())
    EXPECT_NE(button->objectName(), "BrowseDestination") << "a server's files are not here";
  Press("Browse...", Dialog());
  auto* chooser = Open<QFileDialog>();
  ASSERT_NE(chooser, nullptr);
  EXPECT_EQ(chooser->windowTitle(), "Select the Source Page you want to use:");
  EXPECT_EQ(chooser->defaultSuffix(), "htm");
  ASSERT_EQ(chooser->nameFilters().size(), 6);
  EXPECT_EQ(chooser->nameFilters()[0], "Active Server Page (*.asp) (*.ASP)");
  EXPECT_EQ(chooser->selectedNameFilter(), "HTML Document (*.htm)") << "what is seen of it";
  emit chooser->fileSelected("t-chosen.htm");
  EXPECT_EQ(Line("SourceFileName").text(), "t-chosen.htm");
}

class PairGridTest : public PairDialogTest {
 protected:
  PairGrid& Grid(std::vector<clsPair> pairs) {
    auto* grid = new PairGrid(desk, kFile, std::move(pairs));
    grid->setObjectName("Grid");
    grid->onChanged = [this] { ++changes; };
    grid->show();
    Settle();
    return *grid;
  }
  QTableWidget& Table() { return *dynamic_cast<QTableWidget*>(Named("Pairs")); }
  std::string Row(int row) {
    std::string text;
    for (int column = 0; column < 3; ++column) text += Table().item(row, column)->text().toStdString() + "|";
    return text;
  }
  int changes = 0;
};

TEST_F(PairGridTest, ShowsWhenEachPairIsUpdated) {
  clsPair never = Pair("t-b", "w-b"), some = Pair("t-c", "w-c");
  never.UseUpdateRules = some.UseUpdateRules = true;
  some.UpdateRulesFlags = 63;
  Grid({Pair("t-a", "w-a"), never, some});
  EXPECT_EQ(Row(0), "t-a|w-a|Always|");
  EXPECT_EQ(Row(1), "t-b|w-b|No item|");
  EXPECT_EQ(Row(2), "t-c|w-c|ACJSVU|");
  EXPECT_EQ(Table().horizontalHeaderItem(2)->text(), "Update?");
}

TEST_F(PairGridTest, PairsAreAddedEditedMovedAndRemoved) {
  PairGrid& grid = Grid({});
  EXPECT_FALSE(Named("EditPair")->isEnabled());
  for (const char* name : {"a", "b"}) {
    Press("Add...", &grid);
    Type("SourceFileName", std::string("t-") + name);
    Type("DestinationFileName", std::string("w-") + name);
    Press("OK", Dialog());
  }
  Press("Add...", &grid);
  Press("Cancel", Dialog());
  EXPECT_EQ(PairsText(grid.Pairs()), PairsText({Pair("t-a", "w-a"), Pair("t-b", "w-b")}));
  EXPECT_EQ(changes, 2);

  Press("Move Up", &grid);
  EXPECT_EQ(PairsText(grid.Pairs()), PairsText({Pair("t-b", "w-b"), Pair("t-a", "w-a")}));
  EXPECT_FALSE(Named("MovePairUp")->isEnabled());
  const auto focusTable = [&] {  // there is no window manager to do it
    grid.activateWindow();
    Table().setFocus();
    Settle();
  };
  focusTable();
  QTest::keyClick(&Table(), Qt::Key_Down, Qt::AltModifier);
  EXPECT_EQ(Row(1), "t-b|w-b|Always|");
  EXPECT_FALSE(Named("MovePairDown")->isEnabled());

  QTest::keyClick(&Table(), Qt::Key_Return);
  Settle();
  Type("DestinationFileName", "w-changed");
  Press("OK", Dialog());
  EXPECT_EQ(Row(1), "t-b|w-changed|Always|");
  focusTable();
  QTest::keyClick(&Table(), Qt::Key_Delete);
  Press("Remove", &grid);
  EXPECT_TRUE(grid.Pairs().empty());
  EXPECT_FALSE(Named("RemovePair")->isEnabled());
}

TEST_F(PairGridTest, TakesNoMoreThanAnOutputMayHave) {
  Grid(std::vector<clsPair>(kMaxPairs, Pair("t-a", "w-a")));
  EXPECT_FALSE(Named("AddPair")->isEnabled());
  QTest::keyClick(&Table(), Qt::Key_Insert);
  Settle();
  EXPECT_EQ(Open<QDialog>(), nullptr);
  QTest::keyClick(&Table(), Qt::Key_Delete);
  EXPECT_TRUE(Named("AddPair")->isEnabled());
}

}  // namespace
}  // namespace zeb
