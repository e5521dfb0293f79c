#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <utility>
#include <vector>

#include "app/ServiceEditor.h"
#include "core/ProgramSettings.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "tests/desktop/DialogTest.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

class OutputDialogTest : public DialogTest {};

constexpr OutputType kAllTypes[] = {OutputType::kWeb, OutputType::kEncoder, OutputType::kFile,
                                    OutputType::kDAB, OutputType::kHTTP,    OutputType::kSerial};

struct BadInput {
  OutputType type;
  std::vector<std::pair<std::string, std::string>> entered;
  std::string box;
  QMessageBox::Icon icon;
  std::string focus;
};

const QMessageBox::Icon kWarns = QMessageBox::Warning;
const std::string kNoLogin = "You must enter a valid FTP Server, Username and Password";
const std::string kBadServer =
    "The FTP Server name is not valid - it must not contain any of the following characters: /\\<space>:\n"
    "Make sure you have only entered the name or IP address of the FTP Server, and have not entered the "
    "folder (i.e /upload/)\n"
    "You also do not need to add the ftp:// prefix";
const std::string kNoProxy = "You must give the details of the Proxy server to use";
const std::string kNoPort = "You must enter a Com Port number from 1 to 16";
const std::string kNoSettings = "You must enter a set of Serial Settings such as '9600,n,8,1'";
const std::string kLineEnds =
    "The Eureka 147 DAB protocol that ZEB uses does not allow Carriage Returns inside DLS messages";

const std::vector<BadInput> kBadInput = {
    {OutputType::kSerial, {{"CommPort", "0"}}, kNoPort, kWarns, "CommPort"},
    {OutputType::kSerial, {{"CommPort", "17"}}, kNoPort, kWarns, "CommPort"},
    {OutputType::kSerial, {{"CommPort", ""}, {"Settings", ""}}, kNoPort, kWarns, "CommPort"},
    {OutputType::kSerial, {{"Settings", "  "}}, kNoSettings, kWarns, "Settings"},
    {OutputType::kSerial,
     {{"MaxNumberChars", "many"}},
     "Maximum characters (0: no limit) takes a whole number from 0 on, not 'many'",
     kWarns,
     "MaxNumberChars"},
    {OutputType::kDAB,
     {{"SimpleTextFormat", "a\nb"}, {"MaxNumberChars", "200"}},
     kLineEnds,
     kWarns,
     "SimpleTextFormat"},
    {OutputType::kDAB,
     {{"MaxNumberChars", "129"}},
     "The maximum number of characters must be from 1 to 128",
     kWarns,
     "MaxNumberChars"},
    {OutputType::kDAB,
     {{"ServerPort", "65536"}},
     "Port takes a whole number from 1 to 65535, not '65536'",
     kWarns,
     "ServerPort"},
    {OutputType::kHTTP, {{"RequestType", "7"}}, "You musy choose a Request Type", kWarns, "RequestType"},
    {OutputType::kHTTP,
     {{"EscapeValues", "sgml"}},
     "Values can be escaped as html, xml, json or auto, or not at all",
     kWarns,
     "EscapeValues"},
    {OutputType::kHTTP,
     {{"DelaySeconds", "3601"}},
     "Show everything later by (seconds) takes a whole number from 0 to 3600, not '3601'",
     kWarns,
     "DelaySeconds"},
    {OutputType::kWeb, {{"FTPServerName", ""}}, kNoLogin, kWarns, "FTPServerName"},
    {OutputType::kWeb, {{"FTPUsername", ""}}, kNoLogin, kWarns, "FTPUsername"},
    {OutputType::kWeb, {{"FTPPassword", ""}}, kNoLogin, kWarns, "FTPPassword"},
    {OutputType::kWeb, {{"FTPServerPort", ""}}, kNoLogin, kWarns, "FTPServerPort"},
    {OutputType::kWeb, {{"FTPServerName", "ftp://a"}}, kBadServer, kWarns, "FTPServerName"},
    {OutputType::kWeb, {{"FTPServerName", "a b"}, {"FTPUseProxy", "1"}}, kBadServer, kWarns, "FTPServerName"},
    {OutputType::kWeb, {{"FTPUseProxy", "1"}}, kNoProxy, QMessageBox::Information, "FTPProxyName"},
    {OutputType::kWeb,
     {{"FTPUseProxy", "1"}, {"FTPProxyName", "proxy"}, {"FTPProxyPort", ""}},
     kNoProxy,
     QMessageBox::Information,
     "FTPProxyPort"},
    {OutputType::kEncoder,
     {{"IcecastCheckSeconds", "-1"}},
     "Look for a new stream every (seconds) takes a whole number from 0 to 3600, not '-1'",
     kWarns,
     "IcecastCheckSeconds"},
};

TEST_F(OutputDialogTest, BadInputIsShownStoresNothingAndRestartsNothing) {
  for (const BadInput& bad : kBadInput) {
    SCOPED_TRACE(bad.box);
    const std::string before = Stored();
    const OutputPtr running = Running(bad.type);
    OpenOutput(bad.type);
    for (const auto& [name, text] : bad.entered) EnterInto(name, text);
    Press("OK", Dialog());
    ASSERT_NE(Box(), nullptr);
    EXPECT_EQ(BoxText(), bad.box);
    EXPECT_EQ(Box()->icon(), bad.icon);
    Press("OK");
    ASSERT_NE(Dialog(), nullptr);
    EXPECT_EQ(Focused(), bad.focus);
    EXPECT_EQ(Stored(), before);
    EXPECT_EQ(Running(bad.type), running);
    Press("Cancel", Dialog());
    EXPECT_EQ(Dialog(), nullptr);
    EXPECT_EQ(Stored(), before);
  }
}

TEST_F(OutputDialogTest, AWebOutputNeedsAPair) {
  hive.WriteText(environment.ServiceKey(1) + "\\Web", "Output1.NumberFiles", "0");
  main.Reload();
  Settle();
  OpenOutput(OutputType::kWeb);
  EnterInto("FTPServerName", "");
  Press("OK", Dialog());
  EXPECT_EQ(BoxText(), "You have not added any files.");
  EXPECT_EQ(Box()->icon(), kWarns);
}

// The text of a line end, alternates with blanks and line ends, words and numbers that nobody could enter.
TEST_F(OutputDialogTest, WhatIsNotChangedStaysAsItIsStored) {
  const std::string key = environment.ServiceKey(1);
  hive.WriteText(key + "\\Encoder", "SHOUTCastServerPort1", "70000");
  hive.WriteNumber(key + "\\Encoder", "EncoderType1", 9);
  hive.WriteText(key + "\\HTTPRequest", "VerifyURL1", "two\nlines ");
  main.Reload();
  Settle();
  for (const OutputType type : kAllTypes) {
    SCOPED_TRACE(NameOf(type));
    OpenOutput(type);
    Press("OK", Dialog());
    ASSERT_EQ(Box(), nullptr) << BoxText();
    ASSERT_EQ(Dialog(), nullptr);
    const std::string once = Stored();
    const OutputPtr running = Running(type);
    OpenOutput(type);
    Press("OK", Dialog());
    EXPECT_EQ(Stored(), once);
    EXPECT_EQ(Running(type), running) << "nothing is set otherwise, so it goes on running";
  }
  EXPECT_EQ(hive.ReadText(key + "\\Serial", "SimpleTextFormat1", ""), "one\r\ntwo");
  EXPECT_EQ(hive.ReadText(key + "\\Serial", "AlternateStrings1", ""), "a|b\r\nc| d ");
  EXPECT_EQ(hive.ReadNumber(key + "\\Encoder", "SHOUTCastServerPort1", 0), 70000);
  EXPECT_EQ(hive.ReadNumber(key + "\\Encoder", "EncoderType1", 0), 9);
  EXPECT_EQ(hive.ReadText(key + "\\HTTPRequest", "VerifyURL1", ""), "two\nlines ");
}

TEST_F(OutputDialogTest, OneChangedValueIsTheOnlyOneStoredOtherwise) {
  OpenOutput(OutputType::kHTTP);
  Press("OK", Dialog());
  std::string wanted = Stored();
  const OutputPtr serial = Running(OutputType::kSerial);
  OpenOutput(OutputType::kHTTP);
  EnterInto("URL", "/other");
  Press("OK", Dialog());
  const std::string was = "URL1=/now\n";
  wanted.replace(wanted.find(was), was.size(), "URL1=/other\n");
  EXPECT_EQ(Stored(), wanted);
  EXPECT_EQ(Running(OutputType::kSerial), serial) << "another output is not restarted";
}

TEST_F(OutputDialogTest, AStoreThatCannotBeWrittenIsToldAndTheStationGoesOn) {
  const std::string before = Stored();
  const OutputPtr running = Running(OutputType::kHTTP);
  OpenOutput(OutputType::kHTTP);
  EnterInto("URL", "/other");
  hive.failure = "settings.db: disk full";
  Press("OK", Dialog());
  EXPECT_EQ(BoxText(), "settings.db: disk full");
  Press("OK");
  ASSERT_NE(Dialog(), nullptr) << "what was entered is still there";
  hive.failure.clear();
  EXPECT_EQ(Stored(), before);
  EXPECT_EQ(Running(OutputType::kHTTP), running);
  Press("OK", Dialog());
  EXPECT_EQ(hive.ReadText(environment.ServiceKey(1) + "\\HTTPRequest", "URL1", ""), "/other");
}

TEST_F(OutputDialogTest, AnOutputThatWasRemovedMeanwhileIsNotChanged) {
  OpenOutput(OutputType::kHTTP);
  const OutputPtr running = Running(OutputType::kHTTP);
  ASSERT_TRUE(ServiceEditor(main.Window(1)).RemoveOutput(running));
  const std::string before = Stored();
  Press("OK", Dialog());
  EXPECT_EQ(BoxText(), "the output has been changed or removed meanwhile; look at it again");
  EXPECT_EQ(Stored(), before);
  Press("OK");
  Press("Cancel", Dialog());
  OpenOutputProperties(desk, main.Window(1), running);
  EXPECT_EQ(BoxText(), "The output has been changed or removed meanwhile; look at it again");
}

TEST_F(OutputDialogTest, SettingsThatCannotBeReadAreTold) {
  hive.failure = "settings.db: locked";
  OpenOutputProperties(desk, main.Window(1), Running(OutputType::kHTTP));
  EXPECT_EQ(BoxText(), "settings.db: locked");
  EXPECT_EQ(Dialog(), nullptr);
}

TEST_F(OutputDialogTest, FieldsGoWithWhatSwitchesThem) {
  OpenOutput(OutputType::kHTTP);
  EXPECT_FALSE(Named("HTTPPassword")->isEnabled());
  EnterInto("HTTPAuthenticate", "1");
  EXPECT_TRUE(Named("HTTPPassword")->isEnabled());
  Press("Cancel", Dialog());
  OpenOutput(OutputType::kEncoder);
  EXPECT_TRUE(Named("IcecastMount")->isEnabled());
  EnterInto("EncoderType", "7");
  EXPECT_FALSE(Named("IcecastMount")->isEnabled());
  EXPECT_TRUE(Named("WME7ComputerName")->isEnabled());
}

TEST_F(OutputDialogTest, ThePasswordIsHiddenUntilItIsAskedFor) {
  OpenOutput(OutputType::kWeb);
  auto* line = dynamic_cast<QLineEdit*>(Named("FTPPassword"));
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->echoMode(), QLineEdit::Password);
  Press("Show", line->parentWidget());
  EXPECT_EQ(line->echoMode(), QLineEdit::Normal);
}

// ---- Adding and removing

TEST_F(OutputDialogTest, SixKindsAreOfferedAndNothingIsAddedBeforeOK) {
  const std::string before = Stored();
  OpenAddOutput(desk, main.Window(1));
  Settle();
  auto* list = dynamic_cast<QListWidget*>(Named("OutputTypes"));
  ASSERT_NE(list, nullptr);
  std::vector<std::string> lines;
  for (int i = 0; i < list->count(); ++i) lines.push_back(list->item(i)->text().toStdString());
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "Internet (Web/WAP) - Displays information on a Web/WAP Site using FTP",
                       "Internet Encoder (Streaming) - Sends information to an Internet Audio Encoder",
                       "File Output - Sends information to a file on your computer",
                       "Digital Radio (DAB) - Sends information to a transmitter to broadcast to DAB radios",
                       "HTTP Request - Encodes the information into a request sent to a web server",
                       "Serial - Send the information out of a Serial (COM) Port"}));
  list->setCurrentRow(5);
  Press("OK", list->window());
  ASSERT_NE(Dialog(), nullptr);
  EXPECT_EQ(Dialog()->Field("SimpleTextFormat")->Text(), kDefaultSimpleTextFormat);
  Press("Cancel", Dialog());
  EXPECT_EQ(Stored(), before);

  OpenAddOutput(desk, main.Window(1));
  Settle();
  dynamic_cast<QListWidget*>(Named("OutputTypes"))->setCurrentRow(5);
  Press("OK", Named("OutputTypes")->window());
  EnterInto("CommPort", "3");
  Press("OK", Dialog());
  const auto added = main.Window(1)->service().Output(OutputType::kSerial, 2);
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added->GetInformationString(), "Port: 3");
}

TEST_F(OutputDialogTest, ARemovedOutputCanBeBroughtBackForThirtySeconds) {
  const std::string settings = Running(OutputType::kSerial)->SettingsText();
  const auto count = [&] {
    return main.Window(1)->service().OutputCount(static_cast<int>(OutputType::kSerial));
  };
  for (const char* answer : {"No", "Yes"}) {
    AskRemoveOutput(desk, main.Window(1), Running(OutputType::kSerial));
    Settle();
    EXPECT_EQ(BoxText(), "Are you sure you want to remove the Output \"Serial 1 of Demo FM\"?");
    EXPECT_EQ(Box()->defaultButton()->text(), "&No");
    Press(answer);
    EXPECT_EQ(count(), answer == std::string("No") ? 1 : 0);
  }
  Pass(std::chrono::milliseconds(29900));
  Press("Undo", Named("Undo"));
  ASSERT_EQ(count(), 1);
  EXPECT_EQ(Running(OutputType::kSerial)->SettingsText(), settings);
  for (QWidget* widget : QApplication::topLevelWidgets())
    EXPECT_FALSE(widget->isVisible() && widget->objectName() == "Undo");

  AskRemoveOutput(desk, main.Window(1), Running(OutputType::kSerial));
  Press("Yes");
  ASSERT_NE(Named("Undo"), nullptr);
  Pass(std::chrono::seconds(31));
  for (QWidget* widget : QApplication::topLevelWidgets())
    EXPECT_FALSE(widget->isVisible() && widget->objectName() == "Undo");
  EXPECT_EQ(count(), 0);
}

TEST_F(OutputDialogTest, AnOutputThatCannotBeRemovedStays) {
  AskRemoveOutput(desk, main.Window(1), Running(OutputType::kSerial));
  hive.failure = "settings.db: disk full";
  Press("Yes");
  EXPECT_EQ(BoxText(), "settings.db: disk full");
  hive.failure.clear();
  EXPECT_NE(Running(OutputType::kSerial), nullptr);
}

TEST_F(OutputDialogTest, TheServiceToRemoveIsChosenByName) {
  Station("Rock 1");
  main.Reload();
  Settle();
  OpenRemoveService(desk);
  Settle();
  auto* list = dynamic_cast<QListWidget*>(Named("Services"));
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->count(), 2);
  list->setCurrentRow(1);
  Press("OK", list->window());
  EXPECT_EQ(BoxText(), "Are you sure you want to remove the Service \"Rock 1\"?");
  Press("Yes");
  EXPECT_EQ(main.NumberServices(), 1);
  EXPECT_EQ(main.Window(1)->service().settings.ServiceName, "Demo FM");
}

// ---- Trying

TEST_F(OutputDialogTest, ATestTellsItsStepsOfWhatStandsInTheDialog) {
  files.Put("/data/page.htm", "<html></html>");
  OpenOutput(OutputType::kSerial);
  EnterInto("CommPort", "4");
  EnterInto("Settings", "nonsense");
  Press("Test", Dialog());
  auto* steps = dynamic_cast<QListWidget*>(Named("TestSteps"));
  ASSERT_NE(steps, nullptr);
  Pass(std::chrono::seconds(21));
  ASSERT_EQ(steps->count(), 1);
  EXPECT_TRUE(steps->item(0)->text().startsWith("✗ line settings 'nonsense'"))
      << steps->item(0)->text().toStdString();
  EXPECT_EQ(dynamic_cast<QLabel*>(Named("TestState"))->text(), "Something is wrong:");
  Press("Close", steps->window());
  EnterInto("Settings", "9600,n,8,1");
  Press("Test", Dialog());
  Pass(std::chrono::seconds(21));
  steps = dynamic_cast<QListWidget*>(Named("TestSteps"));
  ASSERT_NE(steps, nullptr);
  ASSERT_GE(steps->count(), 2);
  EXPECT_TRUE(steps->item(1)->text().contains(("port 4, '" + UsualCommPortDevice(4) + "'").c_str()))
      << "the device of the port entered";
}

TEST_F(OutputDialogTest, ATestWhoseDialogIsClosedGoesOnByItself) {
  OpenOutputTest(desk, main.Window(1), Running(OutputType::kHTTP));
  Settle();
  Press("Close", Named("OutputTest"));
  Pass(std::chrono::seconds(40));
  EXPECT_EQ(loop.TaskCount(), 0u);
}

// ---- As a whole

TEST_F(OutputDialogTest, EveryDialogIsWholeAtEveryScale) {
  for (const OutputType type : kAllTypes) {
    SCOPED_TRACE(NameOf(type));
    ExpectWholeTree([&]() -> QWidget* {
      OpenOutput(type);
      return Dialog();
    });
  }
  ExpectWholeTree([&] {
    OpenAddOutput(desk, main.Window(1));
    Settle();
    return Named("OutputTypes")->window();
  });
  ExpectWholeTree([&] {
    OpenRemoveService(desk);
    Settle();
    return Named("Services")->window();
  });
}

}  // namespace
}  // namespace zeb
