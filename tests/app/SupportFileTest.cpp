#include <gtest/gtest.h>

#include "app/SupportFile.h"
#include "platform/common/LibzipFiles.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

class SupportFileTest : public testing::Test, protected TestEnvironment {
 protected:
  std::vector<ZipEntry> Collect(const SupportInput& input) {
    return CollectSupport(files, PlanSupport(environment, input));
  }
  static std::string Text(const std::vector<ZipEntry>& entries, const std::string& name) {
    for (const ZipEntry& entry : entries)
      if (entry.name == name) return entry.bytes;
    return "no such file";
  }
  std::string web = environment.ServiceKey(1) + "\\Web";
};

TEST_F(SupportFileTest, SecretsAreNowhereInIt) {
  hive.WriteText(web, "FTPPassword1", "Passwort+1");
  hive.WriteText(environment.ServiceKey(1) + "\\Hologram", "StreamToken1", "tok-4711");
  hive.WriteText(environment.settingsRoot, "DashboardPassword", "$argon2id$hash");
  hive.WriteText(web, "Output1.SourceFileName1", "page.htm");
  files.Put("/data/page.htm", "<a href='ftp://u:other@h'>tok-4711</a>");
  files.Put("/data/DebugFiles/zebd.20261124.log", "USER u, PASS Passwort+1\nAuthorization: Basic QQ==\n");
  SupportInput input;
  input.reason = "my password is Passwort+1";
  input.withTemplates = true;
  input.journal = "12:00 tok-4711\n";
  const std::vector<ZipEntry> entries = Collect(input);
  for (const ZipEntry& entry : entries)
    for (const char* secret : {"Passwort+1", "tok-4711", "argon2id", "other", "QQ=="})
      EXPECT_EQ(entry.bytes.find(secret), std::string::npos) << entry.name << "\n" << entry.bytes;
  EXPECT_NE(Text(entries, "settings.reg").find("\"StreamToken1\"=\"***\""), std::string::npos);
  EXPECT_EQ(Text(entries, "templates/1-page.htm"), "<a href='ftp://u:***@h'>***</a>");
  EXPECT_EQ(Text(entries, "logs/zebd.20261124.log"), "USER u, PASS ***\nAuthorization: ***\n");
}

TEST_F(SupportFileTest, TheNewestLogsAreInItAndOfALongOneItsEnd) {
  hive.WriteText("Software\\Hexmoor", "DebugPath", "/logs");
  for (int i = 0; i < 5; ++i) {
    const std::string path = "/logs/zebd.2026112" + std::to_string(i) + ".log";
    files.Put(path, "day " + std::to_string(i));
    files.SetModified(path, 100 + i);
  }
  files.Put("/logs/other.txt", "x");
  std::string longer;
  longer.resize(kMostSupportLog + 5, 'a');
  files.Put("/logs/long.log", longer.append("the end"));
  files.SetModified("/logs/long.log", 200);
  const std::vector<ZipEntry> entries = Collect({});
  EXPECT_EQ(Text(entries, "logs/zebd.20261124.log"), "day 4");
  EXPECT_EQ(Text(entries, "logs/zebd.20261123.log"), "day 3");
  EXPECT_EQ(Text(entries, "logs/zebd.20261122.log"), "no such file");
  EXPECT_EQ(Text(entries, "logs/other.txt"), "no such file");
  const std::string end = Text(entries, "logs/long.log");
  EXPECT_TRUE(end.starts_with("(only the end of the file)\naaa"));
  EXPECT_TRUE(end.ends_with("the end"));
  EXPECT_EQ(end.size(), kMostSupportLog + std::string("(only the end of the file)\n").size());
}

TEST_F(SupportFileTest, WhatCannotBeReadSaysWhy) {
  hive.WriteText(web, "SourceFileName1", "gone.htm");
  SupportInput input;
  input.withTemplates = true;
  EXPECT_EQ(Text(Collect(input), "templates/1-gone.htm").substr(0, 5), "canno");
  hive.failure = "damaged";
  EXPECT_EQ(Text(Collect(input), "settings.reg"), "The settings cannot be read: damaged\n");
}

TEST_F(SupportFileTest, WithoutAskingThereAreNoTemplates) {
  hive.WriteText(web, "SourceFileName1", "page.htm");
  files.Put("/data/page.htm", "x");
  EXPECT_EQ(Text(Collect({}), "templates/1-page.htm"), "no such file");
}

TEST_F(SupportFileTest, TheNameIsOneThatEveryFileSystemTakes) {
  const WallTime now = loop.Now();
  EXPECT_EQ(SupportFileName("", now), "ZEB-support-20260302-1200.zip");
  EXPECT_EQ(SupportFileName("4711", now), "ZEB-support-4711-20260302-1200.zip");
  EXPECT_EQ(SupportFileName("../a b/Ä", now).find_first_of("/ "), std::string::npos);
  EXPECT_LT(SupportFileName(std::string(500, 'x'), now).size(), 80u);
}

TEST_F(SupportFileTest, ItIsPutInItsPlaceWholeOrNotAtAll) {
  const LibzipFiles zips;
  files.Put("/out.zip", "old");
  files.fail = [](const std::string& operation, const std::string&) {
    return operation == "Rename" ? std::string("no rights") : std::string();
  };
  EXPECT_FALSE(WriteSupport(files, zips, "/out.zip", {{"a", "b"}}, loop.Now()));
  EXPECT_EQ(files.Contents("/out.zip"), "old");
  files.fail = nullptr;
  ASSERT_TRUE(WriteSupport(files, zips, "/out.zip", {{"a", "b"}}, loop.Now()));
  EXPECT_EQ(files.Contents("/out.zip").substr(0, 2), "PK");
  EXPECT_FALSE(files.Stat("/out.zip")->openToAll);
}

}  // namespace
}  // namespace zeb
