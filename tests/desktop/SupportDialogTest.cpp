#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include "app/desktop/dialogs/Files.h"
#include "platform/ZipFiles.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/FileChoice.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

class RecordingZips : public ZipFiles {
 public:
  Result<std::string> Make(const std::vector<ZipEntry>& entries, WallTime) const override {
    made = entries;
    return std::string("PK");
  }
  mutable std::vector<ZipEntry> made;
};

class SupportDialogTest : public DesktopTest {
 protected:
  SupportDialogTest() {
    environment.zips = &zips;
    Station("Demo FM");
    Output(1, OutputType::kHTTP, {{"URL1", "http://a"}, {"HTTPPassword1", "geheim"}});
    files.Put("/data/DebugFiles/zeb.20261124.log", "10:00 sent with geheim\n");
    files.Put("/data/Generic.ini", "[Generic]\n");
    Load();
    environment.person.Note("log on as demo:geheim failed");
    OpenSupportFile(desk);
    Settle();
  }

  void LookThrough() {
    Type("Reference", "47/11");
    Type("Reason", "The page is old");
    Press("Look through it", Named("SupportFile"));
  }
  static QTreeWidget* Tree() { return dynamic_cast<QTreeWidget*>(Named("Files")); }
  static QTreeWidgetItem* Row(const std::string& name) {
    const auto found = Tree()->findItems(QString::fromStdString(name), Qt::MatchExactly | Qt::MatchRecursive);
    return found.empty() ? nullptr : found.front();
  }
  std::string TextOf(const std::string& name) {
    Tree()->setCurrentItem(Row(name));
    Settle();
    return dynamic_cast<QPlainTextEdit*>(Named("Text"))->toPlainText().toStdString();
  }
  void Save(const std::string& path) {
    Press("Save…", Named("SupportFile"));
    ASSERT_TRUE(ChooseFile(path));
    Settle();
  }

  RecordingZips zips;
};

TEST_F(SupportDialogTest, BothOfItsPagesAreWholeAtAllScales) {
  Named("SupportFile")->close();
  for (const bool lookedThrough : {false, true})
    ExpectWholeTree([&] {
      OpenSupportFile(desk);
      Settle();
      if (lookedThrough) LookThrough();
      return Named("SupportFile");
    });
}

TEST_F(SupportDialogTest, AReasonIsNeeded) {
  Press("Look through it", Named("SupportFile"));
  EXPECT_EQ(BoxText(), "You must say what you need help with");
}

TEST_F(SupportDialogTest, WhatIsShownIsWhatIsWritten) {
  LookThrough();
  std::map<std::string, std::string> shown;
  for (const char* name : {"about.txt", "settings.reg", "status.txt", "status.json", "journal.txt",
                           "Generic.ini", "zeb.20261124.log"}) {
    ASSERT_NE(Row(name), nullptr) << name;
    shown[name] = TextOf(name);
    EXPECT_NE(shown[name], "") << name;
    EXPECT_EQ(shown[name].find("geheim"), std::string::npos) << name << ":\n" << shown[name];
  }
  EXPECT_NE(shown["about.txt"].find("Reference: 47/11"), std::string::npos);
  EXPECT_NE(shown["about.txt"].find("The page is old"), std::string::npos);
  EXPECT_NE(shown["settings.reg"].find("\"HTTPPassword1\"=\"***\""), std::string::npos);
  EXPECT_NE(shown["status.txt"].find("Demo FM"), std::string::npos);
  EXPECT_NE(shown["journal.txt"].find("log on as demo:***"), std::string::npos);

  Row("Generic.ini")->setCheckState(0, Qt::Unchecked);
  Save("/out.zip");
  EXPECT_EQ(BoxText(),
            "The support file is now in\n/out.zip\nNothing has been sent: give it to whoever helps you.");
  EXPECT_EQ(files.Contents("/out.zip"), "PK");
  EXPECT_FALSE(files.Stat("/out.zip")->openToAll);
  ASSERT_EQ(zips.made.size(), 6u);
  for (const ZipEntry& entry : zips.made) {
    const std::string name = entry.name.substr(entry.name.find('/') + 1);
    EXPECT_EQ(QString::fromStdString(entry.bytes).replace("\r\n", "\n").toStdString(), shown[name]) << name;
  }
}

TEST_F(SupportDialogTest, TheNameSaysWhoseItIsAndWhen) {
  LookThrough();
  Press("Save…", Named("SupportFile"));
  ASSERT_NE(OpenFileDialog(), nullptr);
  auto* line = OpenFileDialog()->findChild<QLineEdit*>();
  ASSERT_NE(line, nullptr);
  EXPECT_TRUE(line->text().startsWith("ZEB-support-47_11-20")) << line->text().toStdString();
  EXPECT_TRUE(line->text().endsWith(".zip")) << line->text().toStdString();
}

TEST_F(SupportDialogTest, ADiskThatIsFullIsToldAndTheFileCanBeSavedElsewhere) {
  LookThrough();
  files.fail = [](const std::string& operation, const std::string& path) {
    return operation == "Write" && path.starts_with("/full") ? std::string("disk full") : std::string();
  };
  ASSERT_TRUE(files.CreateFolders("/full"));
  Save("/full/out.zip");
  EXPECT_EQ(BoxText(), "The support file could not be written.\ncannot write '/full/out.zip': disk full");
  Press("OK");
  Save("/out.zip");
  EXPECT_TRUE(files.Exists("/out.zip"));
}

TEST_F(SupportDialogTest, SettingsThatCannotBeReadAreNoReasonForNone) {
  hive.failure = "the settings file is damaged";
  LookThrough();
  EXPECT_EQ(TextOf("settings.reg"), "The settings cannot be read: the settings file is damaged\n");
}

}  // namespace
}  // namespace zeb
