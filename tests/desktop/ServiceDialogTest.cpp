#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <algorithm>
#include <vector>

#include "sources/ZEB_FN.h"
#include "tests/desktop/DialogTest.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

class ServiceDialogTest : public DialogTest {
 protected:
  void OpenSettings() {
    OpenServiceSettings(desk, main.Window(1));
    Settle();
    ASSERT_NE(Dialog(), nullptr);
  }
  static std::vector<std::string> Choices(const char* name) {
    std::vector<std::string> choices;
    const auto* box = dynamic_cast<QComboBox*>(Named(name));
    for (int i = 0; box != nullptr && i < box->count(); ++i)
      choices.push_back(box->itemText(i).toStdString());
    return choices;
  }
  static std::string Note() {
    const auto* note = dynamic_cast<QLabel*>(Named("FileInformation"));
    return note == nullptr ? "" : note->text().toStdString();
  }
  ServiceSettings& Settings() { return main.Window(1)->service().settings; }
};

TEST_F(ServiceDialogTest, TheListsAreThoseThatStationsKnow) {
  OpenSettings();
  EXPECT_EQ(Choices("InfoSourceType"),
            (std::vector<std::string>{"Tolvan(TM) v3.5 or higher", "Dallet(TM) v5.0",
                                      "Dallet(TM) v5.1 or higher", "Generic Text Import"}));
  EXPECT_EQ(Choices("CartItemNameLine"),
            (std::vector<std::string>{"Cart Line 1", "Cart Line 2", "Cart Line 3"}));
  const auto ports = Choices("BouncePort");
  ASSERT_EQ(ports.size(), 20u);
  EXPECT_EQ(ports.front(), "Port 1");
  EXPECT_EQ(ports.back(), "Port 20");
  EXPECT_EQ(Choices("TolvanTCPControlPort").size(), 21u);
  std::vector<std::string> texts;
  for (const auto* label : Dialog()->findChildren<QLabel*>())
    texts.push_back(QString(label->text()).remove('&').toStdString());
  for (const auto* button : Dialog()->findChildren<QAbstractButton*>())
    texts.push_back(QString(button->text()).remove('&').toStdString());
  for (const auto* group : Dialog()->findChildren<QGroupBox*>())
    texts.push_back(group->title().toStdString());
  for (const char* text :
       {"How will this Service get it's information:", "Update the Outputs if the Show Presenter Changes",
        "Update the Outputs if the Show Title Changes",
        "When playing an item unless told otherwise, use the cart lines as:",
        "Bounce all information straight on to another ZEB", "Computer Name/TCP-IP Address:"})
    EXPECT_EQ(std::count(texts.begin(), texts.end(), text), 1) << text;
}

TEST_F(ServiceDialogTest, WhatIsEnteredRunsAtOnceAndNothingElseIsStoredOtherwise) {
  OpenSettings();
  Press("OK", Dialog());
  const std::string before = Stored();
  const OutputPtr serial = Running(OutputType::kSerial);
  OpenSettings();
  EnterInto("ServiceName", "Rock 1");
  EnterInto("InstantUpdate", "1");
  EnterInto("CartArtist1Line", "1");
  EnterInto("UpdateIntervalDAB", "45");
  Press("OK", Dialog());
  ASSERT_EQ(Box(), nullptr) << BoxText();
  EXPECT_EQ(Settings().ServiceName, "Rock 1");
  EXPECT_TRUE(Settings().InstantUpdate);
  EXPECT_EQ(Settings().CartArtist1Line, 1);
  EXPECT_EQ(main.Window(1)->service().OutputUpdateInterval(static_cast<int>(OutputType::kDAB)), 45);
  EXPECT_EQ(Running(OutputType::kSerial), serial);
  std::string wanted = before;
  for (const auto& [was, is] : std::vector<std::pair<std::string, std::string>>{
           {"\\ServiceName=Demo FM\n", "\\ServiceName=Rock 1\n"},
           {"\\InstantUpdate=#0\n", "\\InstantUpdate=#1\n"},
           {"\\CartArtist1Line=2\n", "\\CartArtist1Line=1\n"},
           {"\\DAB\\UpdateInterval=0\n", "\\DAB\\UpdateInterval=45\n"}}) {
    ASSERT_NE(wanted.find(was), std::string::npos) << was;
    wanted.replace(wanted.find(was), was.size(), is);
  }
  EXPECT_EQ(Stored(), wanted);
}

TEST_F(ServiceDialogTest, BadInputIsShownAndStoresNothing) {
  struct Bad {
    std::string field, text, box;
  };
  for (const Bad& bad : std::vector<Bad>{
           {"ServiceName", "  ", "a service needs a name"},
           {"TravelFlagDeactivateTimeout", "-1",
            "End the travel flag after (seconds) takes a whole number from 0 on, not '-1'"},
           {"NumberUpdatesOnServer", "x",
            "Length of the history on web servers takes a whole number from 0 on, not 'x'"},
           {"UpdateIntervalWeb", "86401", "Web takes a whole number from 0 to 86400, not '86401'"}}) {
    SCOPED_TRACE(bad.field);
    const std::string before = Stored();
    OpenSettings();
    EnterInto(bad.field, bad.text);
    Press("OK", Dialog());
    EXPECT_EQ(BoxText(), bad.box);
    Press("OK");
    EXPECT_EQ(Focused(), bad.field);
    EXPECT_EQ(Stored(), before);
    Press("Cancel", Dialog());
  }
}

TEST_F(ServiceDialogTest, AControlPortThatAnotherServiceHasIsRefused) {
  Station("Rock 1", {{"TolvanTCPControlPort", "4"}});
  main.Reload();
  Settle();
  const std::string before = Stored();
  OpenSettings();
  EnterInto("TolvanTCPControlPort", "4");
  EnterInto("UpdateIntervalWeb", "30");
  Press("OK", Dialog());
  EXPECT_NE(BoxText().find("Rock 1"), std::string::npos) << BoxText();
  EXPECT_EQ(Stored(), before) << "all of it or nothing";
}

TEST_F(ServiceDialogTest, AStoreThatCannotBeWrittenIsTold) {
  OpenSettings();
  EnterInto("ServiceName", "Rock 1");
  hive.failure = "settings.db: disk full";
  Press("OK", Dialog());
  EXPECT_EQ(BoxText(), "settings.db: disk full");
  hive.failure.clear();
  EXPECT_EQ(Settings().ServiceName, "Demo FM");
  ASSERT_NE(Dialog(), nullptr);
}

TEST_F(ServiceDialogTest, TheChosenFileIsDescribedAMomentAfterItsName) {
  files.Put("/data/now.wsx", "TITLE=Waterloo\r\nARTIST=ABBA\r\n");
  OpenSettings();
  EXPECT_FALSE(Named("InfoSourceFileName")->isEnabled());
  EnterInto("InfoSourceType", std::to_string(kSourceDallet50));
  EXPECT_TRUE(Named("InfoSourceFileName")->isEnabled());
  EnterInto("InfoSourceFileName", "now.wsx");
  EXPECT_EQ(Note(), "File Information:");
  Pass(std::chrono::milliseconds(299));
  EXPECT_EQ(Note(), "File Information:");
  Pass(std::chrono::milliseconds(2));
  EXPECT_EQ(Note().find("File Information:\nCurrent: "), 0u) << Note();
  EnterInto("InfoSourceFileName", "gone.wsx");
  Pass(std::chrono::milliseconds(301));
  EXPECT_NE(Note().find("gone.wsx"), std::string::npos) << Note();
  EnterInto("InfoSourceType", "0");
  EXPECT_EQ(Note(), "File Information:");
}

TEST_F(ServiceDialogTest, AClosedDialogIsNotTold) {
  files.Put("/data/now.wsx", "TITLE=Waterloo\r\n");
  OpenSettings();
  EnterInto("InfoSourceType", "11");
  EnterInto("InfoSourceFileName", "now.wsx");
  Press("Cancel", Dialog());
  Pass(std::chrono::seconds(1));
  EXPECT_EQ(Dialog(), nullptr);
}

TEST_F(ServiceDialogTest, TheDialogIsWholeAtEveryScale) {
  ExpectWholeTree([&]() -> QWidget* {
    OpenSettings();
    return Dialog();
  });
}

}  // namespace
}  // namespace zeb
