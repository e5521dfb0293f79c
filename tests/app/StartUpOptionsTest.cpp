#include <gtest/gtest.h>

#include "app/StartUpOptions.h"

namespace zeb {
namespace {

StartUpOptions Read(const std::vector<std::string>& arguments) {
  Result<StartUpOptions> options = ReadStartUpOptions(arguments);
  EXPECT_TRUE(options.Ok()) << options.Reason();
  return options.Ok() ? options.Value() : StartUpOptions();
}

TEST(StartUpOptions, AreFoundInAnyCaseAnywhereInTheLine) {
  struct Case {
    std::vector<std::string> arguments;
    bool preserve, minimised, noCheck, silent, schedule;
  };
  const Case cases[] = {
      {{}, false, false, false, false, false},
      {{"/minimised"}, false, true, false, false, false},
      {{"/MINIMIZED"}, false, true, false, false, false},
      {{"x/Minimisedx"}, false, true, false, false, false},
      {{"/PreserveTempFiles/NoPrevCheck"}, true, false, true, false, false},
      {{"/silent", "/debug=FULL"}, false, false, false, true, false},
      {{"/SCHEDULE"}, false, true, false, true, true},
      {{"/MINIMI", "SED"}, false, false, false, false, false},  // words are joined with a blank
      {{"--home", "/srv/silent/minimised"}, false, false, false, false, false},
      {{"/SILENT", "--home=/srv/schedule"}, false, false, false, true, false},
  };
  for (const Case& c : cases) {
    const StartUpOptions options = Read(c.arguments);
    const std::string what = c.arguments.empty() ? "nothing" : c.arguments.front();
    EXPECT_EQ(options.preserveTempFiles, c.preserve) << what;
    EXPECT_EQ(options.minimised, c.minimised) << what;
    EXPECT_EQ(options.noPreviousCheck, c.noCheck) << what;
    EXPECT_EQ(options.silent, c.silent) << what;
    EXPECT_EQ(options.schedule, c.schedule) << what;
  }
}

TEST(StartUpOptions, NameTheFileToImport) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"/IMPORT=/root/Station.reg"}, "/root/Station.reg"},
      {{"/import=My Station.reg"}, "My Station.reg"},  // a shell took the quotes off
      {{"/SILENT", "/Import=\"My Station.reg\"", "/MINIMISED"}, "My Station.reg"},
      {{"/IMPORT=\"My", "Station.reg\"", "/SILENT"}, "My Station.reg"},
      {{"/IMPORT"}, ""},
  };
  for (const auto& [arguments, file] : cases)
    EXPECT_EQ(Read(arguments).importFile, file) << arguments.front();
}

TEST(StartUpOptions, KeepTheLineForTheDebugLevelWithoutTheDataFolder) {
  const StartUpOptions options = Read({"--home", "/srv/debug", "/DEBUG=MAX", "/SILENT"});
  EXPECT_EQ(options.commandLine, "/DEBUG=MAX /SILENT");
  EXPECT_EQ(options.home, "/srv/debug");
}

TEST(StartUpOptions, RefuseWhatTheyDoNotKnowByName) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--hom", "x"}, "'--hom'"},
      {{"/SILENT", "--daemon"}, "'--daemon'"},
      {{"-x"}, "'-x'"},
      {{"--home"}, "--home"},
      {{"--home="}, "--home"},
      {{"/IMPORT="}, "/IMPORT="},
      {{"/IMPORT=\"open.reg"}, "quote"},
  };
  for (const auto& [arguments, named] : cases) {
    const Result<StartUpOptions> options = ReadStartUpOptions(arguments);
    ASSERT_FALSE(options.Ok()) << arguments.front();
    EXPECT_NE(options.Reason().find(named), std::string::npos) << options.Reason();
  }
}

}  // namespace
}  // namespace zeb
