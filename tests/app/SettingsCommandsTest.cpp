#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "app/SettingsCommands.h"
#include "app/ZebctlOptions.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

class SettingsCommands : public ::testing::Test {
 protected:
  int Run(std::vector<std::string> words) {
    words.insert(words.begin(), "settings");
    const auto options = ReadZebctlOptions(words);
    if (!options) return 2;
    out_.str("");
    err_.str("");
    const auto& command = std::get<SettingsOptions>(options.Value().command);
    const int status = RunSettingsCommand(test_.hive, test_.files, command, out_, err_);
    const std::string error = err_.str();
    EXPECT_EQ(status == 0, error.empty()) << error;
    EXPECT_TRUE(error.empty() || (error.starts_with("zebctl: ") && error.find('\n') == error.size() - 1))
        << error;
    return status;
  }
  std::string Out(const std::vector<std::string>& arguments) {
    EXPECT_EQ(Run(arguments), 0);
    return out_.str();
  }

  TestEnvironment test_;
  std::ostringstream out_, err_;
  const std::string root_ = test_.environment.settingsRoot;
};

TEST_F(SettingsCommands, KeysAreBelowTheRootOrTheHive) {
  Out({"set", "Service1/File", "Name1", "a b"});
  EXPECT_EQ(test_.hive.ReadText(root_ + "\\Service1\\File", "Name1", ""), "a b");
  EXPECT_EQ(Out({"get", "service1\\FILE\\", "name1"}), "a b\n");
  EXPECT_EQ(Out({"get", "software/" + root_.substr(9) + "/Service1/File", "Name1"}), "a b\n");
  Out({"set", "", "NumberServices", "2", "--number"});
  EXPECT_EQ(test_.hive.ReadNumber(root_, "NumberServices", 0), 2);
  Out({"set", "Software", "v", "1"});  // no path of the hive without its backslash
  EXPECT_TRUE(test_.hive.HasValue(root_ + "\\Software", "v"));
}

TEST_F(SettingsCommands, NumbersAreChecked) {
  for (const auto& [text, shown] :
       {std::pair{"-1", "-1\n"}, {"4294967295", "-1\n"}, {"2147483647", "2147483647\n"}}) {
    Out({"set", "k", "n", text, "--number"});
    EXPECT_EQ(Out({"get", "k", "n"}), shown);
  }
  for (const char* text : {"", "x", "1x", " 1", "4294967296", "-2147483649", "99999999999999999999"})
    EXPECT_EQ(Run({"set", "k", "n", text, "--number"}), 2) << text;
  EXPECT_EQ(Out({"get", "k", "n"}), "2147483647\n");
}

TEST_F(SettingsCommands, ListsKeysTextsAndNumbers) {
  test_.hive.CreateKey(root_ + "\\Service1\\File");
  test_.hive.WriteText(root_ + "\\Service1", "Text", "say \"x\"\r\n");
  test_.hive.WriteNumber(root_ + "\\Service1", "Number", 5);
  EXPECT_EQ(Out({"list", "Service1"}), "File\\\nNumber=5\nText=\"say {22}x{22}{0D}{0A}\"\n");
  EXPECT_EQ(Out({"list"}), "Service1\\\n");
}

TEST_F(SettingsCommands, MissingThingsAndFailuresHaveStatusOne) {
  test_.hive.WriteText(root_ + "\\k", "v", "1");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"get", "k", "none"},
                                             {"get", "none", "v"},
                                             {"list", "none"},
                                             {"export", "none"},
                                             {"delete", "none"},
                                             {"delete", "k", "none"},
                                             {"import", "/none.reg"}})
    EXPECT_EQ(Run(arguments), 1) << arguments[0];
  test_.hive.failure = "settings file 'x' is locked by another program";
  EXPECT_EQ(Run({"set", "k", "v", "2"}), 1);
  EXPECT_EQ(err_.str(), "zebctl: settings file 'x' is locked by another program\n");
}

TEST_F(SettingsCommands, DeletesAValueOrAKey) {
  test_.hive.WriteText(root_ + "\\k", "v", "1");
  Out({"delete", "k", "V"});
  EXPECT_FALSE(test_.hive.HasValue(root_ + "\\k", "v"));
  Out({"delete", "K"});
  EXPECT_FALSE(test_.hive.KeyExists(root_ + "\\k"));
}

TEST_F(SettingsCommands, WhatIsExportedIsImportedWholeOrNotAtAll) {
  test_.hive.WriteText(root_ + "\\Service1", "ServiceName", "R\xC3\xA9gion");
  const std::string file = Out({"export"});
  ASSERT_TRUE(test_.files.Write("/s.reg", file).Ok());
  test_.hive.DeleteKey("Software");
  EXPECT_EQ(Out({"import", "/s.reg"}), "1 value imported\n");
  EXPECT_EQ(Out({"get", "Service1", "ServiceName"}), "R\xC3\xA9gion\n");
  ASSERT_TRUE(test_.files.Write("/s.reg", file + "\"x\"=1\r\n").Ok());
  test_.hive.DeleteKey("Software");
  EXPECT_EQ(Run({"import", "/s.reg"}), 1);
  EXPECT_NE(err_.str().find("'/s.reg': line 8: "), std::string::npos) << err_.str();
  EXPECT_FALSE(test_.hive.KeyExists("Software"));
}

}  // namespace
}  // namespace zeb
