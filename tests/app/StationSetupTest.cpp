// Setting a station up by answers, on simulated ports.
#include <gtest/gtest.h>

#include "app/StationSetup.h"
#include "core/ProgramSettings.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

using Answers = std::vector<std::string>;

class ScriptedTalk : public SetupTalk {
 public:
  bool CanAsk() const override { return canAsk; }
  void Say(const std::string& line) override { said += line + "\n"; }
  void Complain(const std::string& line) override { complaint = line; }
  std::optional<std::string> Ask(const std::string& question, bool secret) override {
    said += question + "\n";
    if (secret) ++secrets;
    if (next == answers.size()) return std::nullopt;
    return answers[next++];
  }

  Answers answers;
  std::size_t next = 0;
  bool canAsk = true;
  int secrets = 0;
  std::string said, complaint;
};

class StationSetupTest : public testing::Test {
 protected:
  StationSetupTest() {
    for (const char* page : {"now.html", "now.json", "now.xml"})
      ports.files.Put("/examples/now-playing-page/" + std::string(page), "<ZEB_NOW_ITEMNAME>");
    EXPECT_TRUE(ports.files.CreateFolders("/www"));
  }
  int Run(const SetupOptions& options = {}) {
    int status = -1;
    ports.loop.Start("setup", [&] {
      status = RunSetup({ports.environment, draft, examples,
                         [this] { return std::string(static_cast<std::size_t>(++told), 'x'); }},
                        options, talk);
    });
    EXPECT_TRUE(ports.loop.RunUntil([&] { return status >= 0; }, std::chrono::minutes(5)));
    return status;
  }
  int Run(Answers answers) {
    talk = {};
    talk.answers = std::move(answers);
    return Run(SetupOptions{});
  }
  std::string Value(const std::string& key, const std::string& name) {
    return ports.hive.ReadText(ports.environment.settingsRoot + key, name, "(none)");
  }

  TestEnvironment ports;
  MemoryHive memory;
  Environment draft{ports.loop,   memory,      ports.files,          ports.network,
                    ports.person, ports.carts, kSimulatedDataFolder, ports.environment.settingsRoot};
  ScriptedTalk talk;
  std::string examples = "/examples";
  int told = 0;
};

TEST_F(StationSetupTest, EnterTakesWhatIsUsualAndTheStationPublishes) {
  ASSERT_EQ(Run(Answers{"Radio X", "", "", "/www", "n", ""}), 0) << talk.said << talk.complaint;
  EXPECT_EQ(Value("", "NumberServices"), "1");
  EXPECT_EQ(Value("\\Service1", "ServiceName"), "Radio X");
  EXPECT_EQ(Value("\\Service1", "TolvanTCPControlPort"), "1");
  EXPECT_EQ(Value("\\Service1\\File", "Output1.DestinationFileName1"), "/www/now.html");
  EXPECT_EQ(Value("\\Service1\\File", "Output1.SourceFileName3"), "templates/now-playing-page/now.xml");
  EXPECT_EQ(Value("\\Service1\\File", "Output1.EscapeValues2"), "auto");
  EXPECT_EQ(ports.files.Contents("/data/templates/now-playing-page/now.html"), "<ZEB_NOW_ITEMNAME>");
  EXPECT_FALSE(ports.files.Exists("/www/now.html")) << "nothing is published by setting up";
  EXPECT_EQ(told, 1);
  EXPECT_NE(talk.said.find("port 6901"), std::string::npos);
}

TEST_F(StationSetupTest, WhoeverStopsAnsweringStoresNothing) {
  const Answers all = {"Radio X", "", "dab", "127.0.0.1:4000", "", "secret", "2", "n", ""};
  ports.files.Put("/data/templates/now-playing-page/now.html", "the station's own");
  for (std::size_t count = 0; count < all.size(); ++count) {
    SCOPED_TRACE(count);
    EXPECT_EQ(Run(Answers(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count))), 1);
    EXPECT_EQ(talk.complaint, "nothing is stored");
    EXPECT_EQ(Value("", "NumberServices"), "(none)");
  }
  EXPECT_EQ(Run(all), 0) << talk.said;
  EXPECT_EQ(talk.secrets, 1);
  EXPECT_EQ(talk.said.find("secret"), std::string::npos);
  EXPECT_EQ(Value("\\Service1\\DAB", "ServicePassword1"), "secret");
  EXPECT_EQ(told, 1);
}

TEST_F(StationSetupTest, AWrongAnswerIsToldAndAskedForAgain) {
  const std::string device = "a device such as " + UsualCommPortDevice(1) + ", or tcp:NAME:PORT";
  const struct {
    Answers answers;
    const char* told;
  } cases[] = {
      {{""}, "a service needs a name"},
      {{"X", "elsewhere"}, "one of these: link, dallet50, dallet51, text"},
      {{"X", "text", ""}, "the file's whole path is needed"},
      {{"X", "", "9"}, "one of these: web, ftp, icecast, shoutcast, rds, dab, http"},
      {{"X", "", "web", "www"}, "a whole path is needed, such as /var/www/html"},
      {{"X", "", "ftp", "server:99999"}, "'99999' is no port number"},
      {{"X", "", "ftp", ""}, "a server is given as name or name:port"},
      {{"X", "", "icecast", "127.0.0.1", "live"}, "a mount begins with '/': /live.mp3"},
      {{"X", "", "rds", "port 1"}, device.c_str()},
      {{"X", "", "http", "ftp://x"}, "an address begins with http:// or https://"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Run(c.answers), 1);
    EXPECT_NE(talk.said.find(std::string("  ") + c.told + "\n"), std::string::npos) << c.told << "\n"
                                                                                    << talk.said;
    EXPECT_EQ(talk.next, c.answers.size());
  }
}

TEST_F(StationSetupTest, WhatDoesNotWorkIsChangedKeptOrLeftOut) {
  // Nobody listens on the address: changed to a folder that works is another kind, so it is left out first.
  ASSERT_EQ(Run(Answers{"X", "", "http", "http://127.0.0.1:1/now", "", "leave", "y", "web", "/www", "n", ""}),
            0)
      << talk.said;
  EXPECT_EQ(Value("\\Service1\\HTTPRequest", "NumberOutputs"), "(none)");
  ASSERT_EQ(Run(Answers{"X", "http", "http://127.0.0.1:1/a", "", "again", "http://127.0.0.1:1/b", "", "keep",
                        "n", ""}),
            0)
      << talk.said;
  EXPECT_NE(talk.said.find("There is a station of that name"), std::string::npos);
  EXPECT_EQ(Value("\\Service1\\HTTPRequest", "URL1"), "/b");
  EXPECT_EQ(Value("\\Service1\\File", "NumberOutputs"), "1") << "what it has stays";
}

TEST_F(StationSetupTest, WithoutATerminalEverythingIsGivenOrNamed) {
  talk.canAsk = false;
  const struct {
    std::map<std::string, std::string> given;
    const char* complaint;
  } cases[] = {
      {{}, "setup needs --name"},
      {{{"name", "X"}, {"playout", "x"}}, "--playout: one of these: link, dallet50, dallet51, text"},
      {{{"name", "X"}, {"playout", "text"}}, "setup needs --file"},
      {{{"name", "X"}, {"ftp", "a"}}, "setup needs --ftp-user"},
      {{{"name", "X"}},
       "setup needs at least one of --web-folder, --ftp, --icecast, --shoutcast, --rds, --dab and --http"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Run(SetupOptions{c.given}), 2);
    EXPECT_EQ(talk.complaint, c.complaint);
  }
  const SetupOptions unreachable{{{"name", "X"}, {"http", "http://127.0.0.1:1/"}}};
  EXPECT_EQ(Run(unreachable), 2);
  EXPECT_NE(talk.complaint.find("store it all the same with --keep"), std::string::npos) << talk.complaint;
  EXPECT_EQ(Value("", "NumberServices"), "(none)");
  EXPECT_EQ(Run(SetupOptions{unreachable.given, true, true}), 0);
  EXPECT_EQ(Value("\\Service1\\HTTPRequest", "UseTLS1"), "0");
}

TEST_F(StationSetupTest, AStoreThatCannotBeWrittenAndMissingExamplesAreTold) {
  ports.hive.failure = "disk full";
  EXPECT_EQ(Run(Answers{"X", "", "web", "/www", "n", ""}), 1);
  EXPECT_EQ(talk.complaint, "nothing is stored: disk full");
  ports.hive.failure.clear();
  examples.clear();
  EXPECT_EQ(Run(Answers{"X", "", "web", "/www", "n", ""}), 2);
  EXPECT_NE(talk.complaint.find("the examples did not come with this program"), std::string::npos);
}

TEST_F(StationSetupTest, AnEncoderGetsAPortNumberOfItsOwn) {
  ports.hive.WriteText(ports.environment.settingsRoot, "CommPortDevice1", "/dev/ttyS0");
  talk.canAsk = false;
  EXPECT_EQ(Run(SetupOptions{{{"name", "X"}, {"rds", "tcp:192.0.2.1:4001"}}, true, true}), 0)
      << talk.complaint;
  EXPECT_EQ(Value("", "CommPortDevice1"), "/dev/ttyS0");
  EXPECT_EQ(Value("", "CommPortDevice2"), "tcp:192.0.2.1:4001");
  EXPECT_EQ(Value("\\Service1\\Serial", "CommPort1"), "2");
  EXPECT_EQ(Value("\\Service1\\Serial", "CharacterSet1"), "RDS");
}

}  // namespace
}  // namespace zeb
