#include "platform/simulated/SimulatedProcesses.h"
#include "status/Alarms.h"
#include "tests/outputs/NetworkFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

class AlarmsTest : public testing::Test {
 protected:
  AlarmsTest() { t.environment.processes = &processes; }
  void Set(const std::string& command, const std::string& url, int after = 30) {
    SettingsHive& hive = t.environment.hive;
    hive.WriteText(t.environment.settingsRoot, "AlarmCommand", command);
    hive.WriteText(t.environment.settingsRoot, "AlarmURL", url);
    hive.WriteNumber(t.environment.settingsRoot, "AlarmAfterSeconds", after);
    alarms.ReadSettings();
  }
  // A look each second.
  void Run(Duration time) {
    for (Duration passed{}; passed < time; passed += 1s) {
      alarms.Look(troubles);
      t.loop.RunFor(1s);
    }
  }
  // What was run since the last call: "begin Demo FM File1 why".
  Lines Ran() {
    Lines lines;
    for (const ProcessOrder& order : std::exchange(processes.orders, {})) {
      std::string line;
      for (const auto& [name, value] : order.variables) line += (line.empty() ? "" : " ") + value;
      lines.push_back(line);
    }
    return lines;
  }
  Lines Notes() { return std::exchange(t.person.notes, {}); }

  TestEnvironment t;
  SimulatedProcesses processes{t.loop};
  Alarms alarms{t.environment};
  std::vector<Trouble> troubles;
  const Trouble file{"Demo FM", "File1", "no space left"}, web{"Demo FM", "Web1", "no answer"};
};

TEST_F(AlarmsTest, AreToldOnceWhenTheyBeginAndOnceWhenTheyEnd) {
  Set("alarm.sh", "");
  troubles = {file};
  Run(30s);
  EXPECT_EQ(Ran(), Lines{});
  Run(1s);
  EXPECT_EQ(processes.orders.at(0).program, "/data/alarm.sh");
  EXPECT_EQ(processes.orders.at(0).variables.front().first, "ZEB_ALARM");
  EXPECT_EQ(processes.orders.at(0).limit, 30s);
  EXPECT_EQ(Ran(), Lines{"begin Demo FM File1 no space left"});
  troubles = {{"Demo FM", "File1", "disk on fire"}, web};  // the same trouble with other words, and a new one
  Run(30s);
  EXPECT_EQ(Ran(), Lines{});
  troubles.erase(troubles.begin());
  Run(2s);
  EXPECT_EQ(Ran(), (Lines{"end Demo FM File1 disk on fire", "begin Demo FM Web1 no answer"}));
  troubles.clear();
  Run(60s);
  EXPECT_EQ(Ran(), Lines{"end Demo FM Web1 no answer"});
}

TEST_F(AlarmsTest, ServicesOfOneNameHaveAlarmsOfTheirOwn) {
  Set("alarm.sh", "", 5);
  troubles = {file};
  Run(10s);
  EXPECT_EQ(Ran(), Lines{"begin Demo FM File1 no space left"});
  troubles = {file, {"Demo FM", "File1", "no rights"}};
  Run(10s);
  EXPECT_EQ(Ran(), Lines{"begin Demo FM File1 no rights"});
  troubles.pop_back();
  Run(10s);
  EXPECT_EQ(Ran(), Lines{"end Demo FM File1 no rights"});
}

TEST_F(AlarmsTest, WhatPassesInTimeIsNone) {
  Set("alarm.sh", "", 5);
  for (int i = 0; i < 20; ++i) {
    troubles = {file};
    Run(5s);
    troubles.clear();
    Run(1s);
  }
  EXPECT_EQ(Ran(), Lines{});
}

TEST_F(AlarmsTest, OneProgramRunsAtATimeAndNothingWaitsForIt) {
  Set("/usr/local/bin/alarm", "", 0);
  processes.takes = 20s;
  troubles = {file, web, {"Second FM", "File1", "x"}};
  const MonotonicTime begin = t.loop.Monotonic();
  alarms.Look(troubles);
  EXPECT_EQ(t.loop.Monotonic(), begin);
  t.loop.RunFor(30s);
  EXPECT_EQ(processes.orders.size(), 2U);
  t.loop.RunFor(2min);
  EXPECT_EQ(processes.mostRunning, 1);
  EXPECT_EQ(Ran().size(), 3U);
}

TEST_F(AlarmsTest, AProgramThatCannotBeEndedIsLeftAndSaidSoOnce) {
  Set("alarm.sh", "", 0);
  processes.takes = 10min;
  troubles = {file};
  Run(60s);
  troubles = {file, web};
  Run(60s);
  EXPECT_EQ(Notes(), Lines{"AlarmCommand: an alarm was not told: '/data/alarm.sh' could not be ended"});
  EXPECT_EQ(processes.orders.size(), 1U);
}

TEST_F(AlarmsTest, ArePostedAsJson) {
  ScriptedServer server(t, 8080);
  server.answer = "HTTP/1.1 204 No Content\r\nContent-Length: 0\r\n\r\n";
  Set("", "http://pager/alarm?x=1", 0);
  t.hive.WriteText(t.environment.settingsRoot, "AlarmURL", "http://pager:8080/alarm?x=1");
  alarms.ReadSettings();
  troubles = {{"Demo \"FM\"", "File1", "no\tspace"}};
  Run(2s);
  ASSERT_EQ(server.requests.size(), 1U);
  const std::string& request = server.requests[0];
  EXPECT_EQ(request.substr(0, request.find("\r\n")), "POST /alarm?x=1 HTTP/1.1");
  EXPECT_EQ(request.substr(request.find("\r\n\r\n") + 4),
            R"({"alarm":"begin","service":"Demo \"FM\"","output":"File1","problem":"no\tspace",)"
            R"("since":"2026-03-02T12:00:00.000+01:00"})");
  EXPECT_EQ(Notes(), Lines{});
  server.answer = "HTTP/1.1 500 Oops\r\nContent-Length: 0\r\n\r\n";
  troubles.clear();
  Run(2s);
  EXPECT_EQ(server.requests.size(), 2U);
  EXPECT_EQ(
      Notes(),
      Lines{"AlarmURL: an alarm was not told: 'http://pager:8080/alarm?x=1' answers 'HTTP/1.1 500 Oops'"});
}

TEST_F(AlarmsTest, AServerThatHangsTakesItsTimeAndNoMore) {
  Set("alarm.sh", "http://pager/", 0);
  t.network.SetHost("pager", SimulatedNetwork::HostBehaviour::kHangs);
  for (int i = 0; i < 3; ++i) troubles.push_back({"Demo FM", "File" + std::to_string(i + 1), "x"});
  alarms.Look(troubles);
  t.loop.RunFor(29s);
  EXPECT_EQ(processes.orders.size(), 3U);  // ten seconds each
  EXPECT_EQ(Notes().size(), 1U);
}

TEST_F(AlarmsTest, AWrongAddressIsNamedWhenTheSettingsAreRead) {
  Set("", "pager.local");
  ASSERT_EQ(t.person.notes.size(), 1U);
  EXPECT_EQ(t.person.notes[0].substr(0, 23), "AlarmURL: 'pager.local'");
}

TEST_F(AlarmsTest, MoreThanCanBeToldAreBounded) {
  Set("alarm.sh", "", 0);
  processes.takes = 1s;
  for (int i = 0; i < 1500; ++i) troubles.push_back({"Demo FM", "File" + std::to_string(i + 1), "x"});
  alarms.Look(troubles);
  EXPECT_EQ(Notes().size(), 1U);
  t.loop.RunFor(1h);
  EXPECT_EQ(Ran().size(), Alarms::kMostWaiting + 1);
}

}  // namespace
}  // namespace zeb
