#include <gtest/gtest.h>

#include <sstream>

#include "app/StationCommands.h"
#include "core/SettingsPaths.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using Action = StationOptions::Action;

struct StationCommandsTest : testing::Test {
  TestEnvironment ports;
  std::string root = ports.environment.settingsRoot;

  // What is printed, or why it is refused.
  std::string Run(const StationOptions& options) {
    std::ostringstream out;
    const Outcome done = RunStationCommand(ports.environment, options, out);
    return done ? out.str() : done.Reason();
  }
  std::string AddService(const std::string& name, NamedValues values = {}) {
    return Run({.action = Action::kAddService, .name = name, .values = std::move(values)});
  }
  std::string AddOutput(OutputType type, NamedValues values) {
    return Run({.action = Action::kAddOutput, .service = 1, .type = type, .values = std::move(values)});
  }
  std::string RemoveOutput(OutputType type, int number) {
    return Run({.action = Action::kRemoveOutput, .service = 1, .type = type, .output = number});
  }
  std::string List() { return Run({.action = Action::kListServices}); }
  std::string Text(const std::string& key, const std::string& name) {
    return ports.hive.ReadText(root + "\\" + key, name, "(none)");
  }
};

TEST_F(StationCommandsTest, ServicesAreAddedRenamedAndRemoved) {
  EXPECT_EQ(List(), "");
  EXPECT_EQ(AddService("One", {{"TolvanTCPControlPort", "1"}, {"instantupdate", "1"}}), "1\n");
  EXPECT_EQ(AddService("Two", {{"InfoSourceFileName", "/playout/now.txt"}}), "2\n");
  EXPECT_EQ(AddService("Three"), "3\n");
  ports.hive.WriteText(root + "\\Service3\\Unknown\\Below", "Kept", "yes");
  EXPECT_EQ(Run({.action = Action::kRenameService, .service = 2, .name = "Zwei"}), "");
  EXPECT_EQ(List(), "1  One\n2  Zwei\n3  Three\n");
  EXPECT_EQ(Text("Service1", "InstantUpdate"), "1");
  EXPECT_EQ(Text("Service2", "InstantUpdate"), "(none)") << "what was not given keeps its default";
  EXPECT_EQ(Run({.action = Action::kRemoveService, .service = 2}), "");
  EXPECT_EQ(List(), "1  One\n2  Three\n");
  EXPECT_EQ(Text("Service2\\Unknown\\Below", "Kept"), "yes");
  EXPECT_EQ(Text("Service2", "InfoSourceFileName"), "(none)");
  EXPECT_FALSE(ports.hive.KeyExists(root + "\\Service3"));
  EXPECT_EQ(Run({.action = Action::kListServices, .json = true}),
            "{\"services\":[{\"number\":1,\"name\":\"One\"},{\"number\":2,\"name\":\"Three\"}]}\n");
}

TEST_F(StationCommandsTest, WhatIsNotPossibleIsToldAndChangesNothing) {
  ports.files.Put("/data/t", "x");
  AddService("One", {{"TolvanTCPControlPort", "1"}});
  const NamedValues page = {{"SourceFileName1", "t"}, {"DestinationFileName1", "/p"}};
  const auto with = [&](NamedValues more) {
    more.insert(more.begin(), page.begin(), page.end());
    return more;
  };
  const struct {
    std::string refusal, begins;
  } table[] = {
      {AddService("x", {{"Nonsense", "1"}}), "a service has no setting 'Nonsense': there are ServiceName, "},
      {AddService("x", {{"InstantUpdate", "7"}}), "InstantUpdate takes yes or no (1 or 0), not '7'"},
      {AddService("x", {{"TolvanTCPControlPort", "1"}}), "control port 1 is that of service 1 already"},
      {AddOutput(OutputType::kFile, {}), "pair 1 has no SourceFileName1"},
      {AddOutput(OutputType::kFile, {{"SourceFileName1", "no"}, {"DestinationFileName1", "/p"}}),
       "SourceFileName1: there is no file '/data/no'"},
      {AddOutput(OutputType::kFile, with({{"Output1.NumberFiles", "3"}})), "the File output has no setting"},
      {AddOutput(OutputType::kFile, with({{"NumberFiles", "3"}})), "the File output has no setting"},
      {AddOutput(OutputType::kFile, with({{"EscapeValues1", "perl"}})), "EscapeValues takes html, xml, json"},
      {AddOutput(OutputType::kWeb, with({{"FTPServerPort", "99999"}})), "FTPServerPort takes a whole number"},
      {RemoveOutput(OutputType::kFile, 1), "service 1 has no output File1: it has no File output"},
      {Run({.action = Action::kRemoveService, .service = 2}),
       "there is no service 2: there is only service 1"},
      {Run({.action = Action::kListOutputs, .service = 2}), "there is no service 2"},
  };
  for (const auto& row : table) EXPECT_TRUE(row.refusal.starts_with(row.begins)) << row.refusal;
  EXPECT_EQ(List(), "1  One\n");
  EXPECT_EQ(Run({.action = Action::kListOutputs, .service = 1}), "");
  EXPECT_TRUE(ports.hive.SubKeys(root + "\\Service1").empty());
}

// A number that ends a setting's own name must not be taken for an output's: output 11 is not output 1.
TEST_F(StationCommandsTest, OutputsAreRenumberedWhenOneGoes) {
  ports.files.Put("/data/t", "x");
  AddService("One");
  for (int i = 1; i <= 12; ++i)
    EXPECT_EQ(AddOutput(OutputType::kFile, {{"SourceFileName1", "t"},
                                            {"DestinationFileName1", "/p" + std::to_string(i)},
                                            {"sourcefilename2", "t"},
                                            {"DestinationFileName2", "/q" + std::to_string(i)},
                                            {"DelaySeconds", std::to_string(i)}}),
              "File" + std::to_string(i) + "\n");
  EXPECT_EQ(AddOutput(OutputType::kHTTP, {{"URL", "/x"}, {"ServerPort", "81"}}), "HTTP1\n");
  EXPECT_EQ(RemoveOutput(OutputType::kFile, 1), "");
  const std::string files = "Service1\\File";
  EXPECT_EQ(Text(files, "NumberOutputs"), "11");
  EXPECT_EQ(Text(files, "Output1.DestinationFileName2"), "/q2");
  EXPECT_EQ(Text(files, "Output10.DestinationFileName1"), "/p11");
  EXPECT_EQ(Text(files, "Output11.DestinationFileName1"), "/p12");
  EXPECT_EQ(Text(files, "Output12.DestinationFileName1"), "(none)");
  EXPECT_EQ(Text(files, "DelaySeconds11"), "12");
  EXPECT_EQ(Text("Service1\\HTTPRequest", "URL1"), "/x");
  EXPECT_EQ(Text("Service1\\HTTPRequest", "ServerPort1"), "81");
}

}  // namespace
}  // namespace zeb
