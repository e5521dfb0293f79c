#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <optional>

#include "app/Languages.h"
#include "app/desktop/dialogs/InputBox.h"
#include "app/desktop/text/ChooseLanguage.h"
#include "app/desktop/text/Translate.h"
#include "tests/desktop/DesktopTest.h"
#include "text/Paths.h"

namespace zeb {
namespace {

class LanguageTest : public DesktopTest {
 protected:
  LanguageTest() {
    environment.programFolder = "/usr/bin";
    files.Put("/data/Languages/lang-German.txt",
              "OK=Gut\n%1 has Control=%1 steuert\nbroken line\n&Yes=&Ja\n");
    files.Put("/usr/share/zeb/Languages/lang-French.txt", "OK=Bon\n");
    files.realPaths["/usr/bin/../share/zeb/Languages"] = "/usr/share/zeb/Languages";
  }
  ~LanguageTest() override { InstallLanguage(nullptr); }

  void Use(const std::string& name) {
    hive.WriteText(environment.settingsRoot, kLanguageSetting, name);
    UseStoredLanguage(desk, [this](const std::string& reason) { failed = reason; });
    Settle();
  }
  static std::string Text(std::string_view english) { return T(english).toStdString(); }

  std::string failed;
};

TEST_F(LanguageTest, TheChosenOneIsInUseAtOnce) {
  int drawn = 0;
  const LanguageWatch watch([&] { ++drawn; });
  EXPECT_EQ(Text("OK"), "OK");
  Use("German");
  EXPECT_EQ(drawn, 1);
  EXPECT_EQ(Text("OK"), "Gut");
  EXPECT_EQ(Text("Studio has Control"), "Studio steuert");
  EXPECT_EQ(Text("Cancel"), "Cancel");
  EXPECT_EQ(console.notes.back(), "Language file '" +
                                      JoinPath(JoinPath("/data", "Languages"), "lang-German.txt") +
                                      "': line 3: has no '=' between the English text and the "
                                      "translated one");
  person.Show(MessageIcon::kInformation, "Studio has Control");
  Settle();
  EXPECT_EQ(BoxText(), "Studio steuert");
  EXPECT_EQ(console.shown.back(), "Studio has Control") << "the journal stays English";
  Use("");
  EXPECT_EQ(drawn, 2);
  EXPECT_EQ(Text("OK"), "OK");
  EXPECT_EQ(failed, "");
}

TEST_F(LanguageTest, OpenWindowsChangeTheirs) {
  files.Put("/data/Languages/lang-French.txt",
            "Name=Nom\nOther=Autre\nZ=Z!\n&Name:=&Nom :\nCancel=Annuler\n");
  files.Put("/data/Languages/lang-German.txt",
            "Name=Wort\nOther=Wort\nZ=Wort\n&Name:=&Name:\nCancel=Abbrechen\nold=alt\n");
  OpenInputBox(desk, nullptr, {"Name", "&Name:", "Field", "old", {}, {}}, [](const std::string&) {});
  QWidget* box = Named("InputBox");
  auto* cancel = box->findChild<QPushButton*>("Cancel");
  const auto caption = [&] { return box->findChild<QLabel*>()->text().toStdString(); };
  for (int i = 0; i < 2; ++i) {
    Use("German");
    EXPECT_EQ(box->windowTitle(), "Wort");
    EXPECT_EQ(cancel->text(), "Abbrechen");
    EXPECT_EQ(caption(), "&Name:");
    EXPECT_EQ(Named("Field")->accessibleName(), "Wort");
    Use("French");
    EXPECT_EQ(box->windowTitle(), "Nom");
    EXPECT_EQ(cancel->text(), "Annuler");
    EXPECT_EQ(caption(), "&Nom :");
  }
  Use("");
  EXPECT_EQ(box->windowTitle(), "Name");
  EXPECT_EQ(cancel->text(), "Cancel");
  EXPECT_EQ(dynamic_cast<QLineEdit*>(Named("Field"))->text(), "old")
      << "what a person has written is no caption";
}

TEST_F(LanguageTest, WithoutANameTheStationsOwnFileCounts) {
  files.Put("/data/language.txt", "OK=Okay\n");
  Use("");
  EXPECT_EQ(Text("OK"), "Okay");
}

TEST_F(LanguageTest, OneThatIsNotThereChangesNothing) {
  Use("German");
  for (const char* name : {"Klingon", "../German", "German.txt"}) {
    failed.clear();
    Use(name);
    EXPECT_NE(failed, "") << name;
    EXPECT_EQ(Text("OK"), "Gut");
  }
  hive.failure = "the settings file is locked";
  UseStoredLanguage(desk, [this](const std::string& reason) { failed = reason; });
  Settle();
  hive.failure.clear();
  EXPECT_EQ(failed, "the settings file is locked");
  EXPECT_EQ(Text("OK"), "Gut");
}

TEST_F(LanguageTest, LanguagesAreFoundInAllPlaces) {
  files.Put("/data/LANG-Dutch.TXT", "OK=Goed\n");
  files.Put("/data/Languages/lang-template.txt", "OK=\n");
  files.Put("/data/Languages/lang-.txt", "");
  files.Put("/usr/bin/Languages/lang-German.txt", "OK=Anders\n");
  std::optional<std::vector<std::string>> names;
  ListLanguages(desk, [&](std::vector<std::string> listed) { names = std::move(listed); });
  Settle();
  ASSERT_TRUE(names);
  EXPECT_EQ(*names, (std::vector<std::string>{"Dutch", "German"}));
  Use("German");
  EXPECT_EQ(Text("OK"), "Gut") << "the station's own file comes first";
}

class InputBoxTest : public DesktopTest {
 protected:
  void OpenLine() {
    InputBox box{"New Name", "&Name:", "Name", "old", {}, [](const std::string& text) {
                   return text.empty() ? std::string("You must give a name") : std::string();
                 }};
    OpenInputBox(desk, nullptr, box, [this](const std::string& text) { given.push_back(text); });
    Settle();
  }
  std::vector<std::string> given;
};

TEST_F(InputBoxTest, GivesWhatOkLeaves) {
  OpenLine();
  auto* line = dynamic_cast<QLineEdit*>(Named("Name"));
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->text(), "old");
  EXPECT_EQ(line->accessibleName(), "Name");
  Type("Name", "new");
  Press("OK", Named("InputBox"));
  EXPECT_EQ(given, std::vector<std::string>{"new"});
  EXPECT_EQ(Open<QDialog>(), nullptr);
}

TEST_F(InputBoxTest, WhatIsWrongIsSaidAndTheInputStays) {
  OpenLine();
  dynamic_cast<QLineEdit*>(Named("Name"))->clear();
  Press("OK", Named("InputBox"));
  EXPECT_EQ(BoxText(), "You must give a name");
  EXPECT_TRUE(given.empty());
  Press("OK");
  ASSERT_NE(Named("InputBox"), nullptr);
  Press("Cancel", Named("InputBox"));
  EXPECT_TRUE(given.empty());
}

TEST_F(InputBoxTest, AChoiceIsGivenAsItWasNotAsItIsShown) {
  InstallLanguage([] {
    auto german = std::make_shared<Language>();
    german->Add("Dark", "Dunkel");
    return german;
  }());
  OpenInputBox(desk, nullptr, {"Theme", "&Theme:", "Theme", "Dark", {"Light", "Dark"}, {}},
               [this](const std::string& text) { given.push_back(text); });
  Settle();
  EXPECT_EQ(dynamic_cast<QComboBox*>(Named("Theme"))->currentText(), "Dunkel");
  Press("OK", Named("InputBox"));
  InstallLanguage(nullptr);
  EXPECT_EQ(given, std::vector<std::string>{"Dark"});
}

}  // namespace
}  // namespace zeb
