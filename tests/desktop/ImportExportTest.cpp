#include <QTreeWidget>

#include "app/desktop/dialogs/Files.h"
#include "core/RegFile.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/FileChoice.h"

namespace zeb {
namespace {

constexpr char kHead[] =
    "Windows Registry Editor Version 5.00\r\n\r\n"
    "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1\\Service1";

class ImportExportTest : public DesktopTest {
 protected:
  ImportExportTest() {
    Station("Demo FM");
    Output(1, OutputType::kHTTP, {{"URL1", "http://a"}, {"HTTPPassword1", "geheim"}});
    Load();
  }

  void OpenImport(const std::string& body) {
    files.Put("/in.reg", kHead + body);
    OpenImportSettings(desk);
    Settle();
    ASSERT_TRUE(ChooseFile("/in.reg"));
    Settle();
  }

  // "Service1\HTTPRequest / URL1 Changed http://a > http://b"
  static std::string List() {
    auto* tree = dynamic_cast<QTreeWidget*>(Named("Changes"));
    if (tree == nullptr) return "no list";
    std::string text;
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
      for (int j = 0; j < tree->topLevelItem(i)->childCount(); ++j) {
        const QTreeWidgetItem* row = tree->topLevelItem(i)->child(j);
        text += (tree->topLevelItem(i)->text(0) + " / " + row->text(0) + " " + row->text(1) + " " +
                 row->text(2) + " > " + row->text(3) + "\n")
                    .toStdString();
      }
    return text;
  }

  std::string Url() { return hive.ReadText(environment.ServiceKey(1) + "\\HTTPRequest", "URL1", ""); }
};

TEST_F(ImportExportTest, WhatIsListedIsTakenOverByWhatRuns) {
  OpenImport(
      "]\r\n\"ServiceName\"=\"Demo Two\"\r\n[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB "
      "v3\\Profiles\\Profile1"
      "\\Service1\\HTTPRequest]\r\n\"URL1\"=\"http://"
      "b\"\r\n\"HTTPPassword1\"=\"anders\"\r\n\"Server1\"=\"h\"\r\n");
  EXPECT_EQ(List(),
            "Service1 / ServiceName Changed Demo FM > Demo Two\n"
            "Service1\\HTTPRequest / HTTPPassword1 Changed *** > ***\n"
            "Service1\\HTTPRequest / Server1 Added  > h\n"
            "Service1\\HTTPRequest / URL1 Changed http://a > http://b\n");
  EXPECT_EQ(Url(), "http://a") << "nothing before Import is pressed";
  Press("Import", Named("ImportSettings"));
  Pass(std::chrono::seconds(1));
  EXPECT_EQ(Url(), "http://b");
  EXPECT_EQ(main.Window(1)->service().settings.ServiceName, "Demo Two");
}

TEST_F(ImportExportTest, CancelChangesNothing) {
  OpenImport("]\r\n\"ServiceName\"=\"Demo Two\"\r\n");
  Press("Cancel", Named("ImportSettings"));
  Pass(std::chrono::seconds(1));
  EXPECT_EQ(main.Window(1)->service().settings.ServiceName, "Demo FM");
}

TEST_F(ImportExportTest, WhatSomebodyElseChangedMeanwhileIsLookedThroughAgain) {
  OpenImport("\\HTTPRequest]\r\n\"URL1\"=\"http://b\"\r\n");
  hive.WriteText(environment.ServiceKey(1) + "\\HTTPRequest", "URL1", "http://c");
  Press("Import", Named("ImportSettings"));
  EXPECT_EQ(BoxText(),
            "The settings have been changed by somebody else meanwhile. Look through the list again.");
  Press("OK");
  EXPECT_EQ(Url(), "http://c");
  EXPECT_EQ(List(), "Service1\\HTTPRequest / URL1 Changed http://c > http://b\n");
  Press("Import", Named("ImportSettings"));
  EXPECT_EQ(Url(), "http://b");
}

TEST_F(ImportExportTest, AStoreThatCannotBeWrittenLeavesEverythingAsItWas) {
  OpenImport("\\HTTPRequest]\r\n\"URL1\"=\"http://b\"\r\n");
  hive.failure = "cannot write 'settings.db': disk full";
  Press("Import", Named("ImportSettings"));
  EXPECT_EQ(
      BoxText(),
      "The settings could not be imported; everything is as it was.\ncannot write 'settings.db': disk full");
  hive.failure.clear();
  EXPECT_EQ(Url(), "http://a");
  EXPECT_NE(Named("ImportSettings"), nullptr) << "to be tried again";
}

TEST_F(ImportExportTest, FilesThatAreNoneAreRefused) {
  OpenImport("]\r\n\"URL1\"=oops\r\n");
  EXPECT_EQ(BoxText().substr(0, 64), "The settings file could not be read; nothing has been changed.\n'");
  EXPECT_NE(BoxText().find("line 4"), std::string::npos) << BoxText();
  Press("OK");
  OpenImportSettings(desk);
  Settle();
  ASSERT_TRUE(ChooseFile("/nowhere.reg"));
  Settle();
  EXPECT_NE(BoxText().find("/nowhere.reg"), std::string::npos) << BoxText();
  Press("OK");
  OpenImport("]\r\n\"ServiceName\"=\"Demo FM\"\r\n");
  EXPECT_EQ(BoxText(), "The file changes nothing: all of its settings are as they are already.");
}

TEST_F(ImportExportTest, WhatIsExportedIsAllOfItAndForTheOwnerOnly) {
  OpenExportSettings(desk);
  Settle();
  ASSERT_TRUE(ChooseFile("/out.reg"));
  Settle();
  EXPECT_EQ(
      BoxText(),
      "The settings are now in\n/out.reg\nThe file holds passwords: keep it where nobody else reads it.");
  EXPECT_FALSE(files.Stat("/out.reg")->openToAll);
  MemoryHive other;
  ASSERT_TRUE(ImportRegFile(other, files.Contents("/out.reg")));
  EXPECT_EQ(ExportRegFile(other, environment.settingsRoot), ExportRegFile(hive, environment.settingsRoot));
}

TEST_F(ImportExportTest, ADiskThatIsFullIsTold) {
  files.fail = [](const std::string& operation, const std::string&) {
    return operation == "Write" ? std::string("disk full") : std::string();
  };
  OpenExportSettings(desk);
  Settle();
  ASSERT_TRUE(ChooseFile("/out.reg"));
  Settle();
  EXPECT_EQ(BoxText(), "The settings could not be exported.\ncannot write '/out.reg': disk full");
}

}  // namespace
}  // namespace zeb
