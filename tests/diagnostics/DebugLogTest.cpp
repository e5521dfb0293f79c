#include <gtest/gtest.h>

#include <memory>

#include "diagnostics/hxGeneral.h"
#include "platform/simulated/TestEnvironment.h"
#include "tests/diagnostics/PlainLines.h"
#include "text/Paths.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr char kRoot[] = "SOFTWARE\\Hexmoor";
constexpr char kFile[] = "/logs/zebd.20260302.log";  // the simulated clock starts on that day at 12:00:00

class DebugLogTest : public testing::Test {
 protected:
  void Install(std::int32_t level, bool alsoToOperator = false) {
    log_ = std::make_unique<DebugLog>(env_.loop, env_.files, env_.person, "zebd", "/logs", level,
                                      alsoToOperator);
    log_->Install();
  }
  std::string Log() { return PlainLines(env_.files.Contents(kFile)); }

  TestEnvironment env_;
  std::unique_ptr<DebugLog> log_;
};

TEST_F(DebugLogTest, IndentsWhatIsBetweenStartedAndFinished) {
  Install(5);
  {
    const Trace outer("Serial.StartOutput");
    WriteDebugLine("Serial: Port Opened OK");
    {
      const Trace inner("Serial.SendText");
      inner.ExitAs("Port Closed");
    }
    env_.loop.RunFor(61s);
    DebugLine("Sent ", 3, " of ", std::int64_t{5000000000}, " bytes");
  }
  EXPECT_EQ(Log(),
            "12:00:00 Started Serial.StartOutput\n"
            "12:00:00     Serial: Port Opened OK\n"
            "12:00:00     Started Serial.SendText\n"
            "12:00:00         Exit as Port Closed\n"
            "12:00:00     Finished Serial.SendText\n"
            "12:01:01     Sent 3 of 5000000000 bytes\n"
            "12:01:01 Finished Serial.StartOutput\n");
}

TEST_F(DebugLogTest, DepthNeverFallsBelowZeroAndCanBeReset) {
  Install(5);
  WriteDebugLine("a", 5, LineKind::kFinished);
  WriteDebugLine("b", 5, LineKind::kStarted);
  WriteDebugLine("c", 5, LineKind::kStarted);
  WriteDebugLine("d", 5, LineKind::kReset);
  WriteDebugLine("e");
  EXPECT_EQ(Log(), "12:00:00 a\n12:00:00 b\n12:00:00     c\n12:00:00 d\n12:00:00 e\n");
}

TEST_F(DebugLogTest, Levels) {
  const struct {
    std::int32_t level;
    const char* written;  // of lines at levels -1 (which means 5), 4, 5, 6, 10, 11
  } cases[] = {{0, ""}, {4, "b"}, {5, "abc"}, {10, "abcde"}, {-1, "abcdef"}};
  for (const auto& c : cases) {
    env_.files.Put(kFile, "");
    Install(c.level);
    const std::int32_t levels[] = {-1, 4, 5, 6, 10, 11};
    for (std::size_t i = 0; i < std::size(levels); ++i)
      WriteDebugLine(std::string(1, static_cast<char>('a' + i)), levels[i]);
    std::string expected;
    for (const char* line = c.written; *line != '\0'; ++line)
      expected += std::string("12:00:00 ") + *line + "\n";
    EXPECT_EQ(Log(), expected) << c.level;
  }
}

TEST_F(DebugLogTest, LevelZeroTouchesNothing) {
  Install(0);
  const Trace trace("X");
  WriteDebugLine("a");
  DebugLine("b");
  ShowProblem("opening", "", Report::kQuietly);
  EXPECT_EQ(env_.files.operations, 0);
  EXPECT_FALSE(env_.files.Exists("/logs"));
}

TEST_F(DebugLogTest, AFileADay) {
  Install(5);
  env_.loop.SetWallClock(
      WallTime(std::chrono::local_days(std::chrono::year(2026) / 12 / 31) + 23h + 59min + 59s));
  WriteDebugLine("old");
  env_.loop.RunFor(1s);
  WriteDebugLine("new");
  EXPECT_EQ(PlainLines(env_.files.Contents("/logs/zebd.20261231.log")), "23:59:59 old\n");
  EXPECT_EQ(PlainLines(env_.files.Contents("/logs/zebd.20270101.log")), "00:00:00 new\n");
}

TEST_F(DebugLogTest, FolderThatCannotBeMade) {
  env_.files.Put("/logs", "a file in its place");
  Install(5, true);
  for (int i = 0; i < 3; ++i) WriteDebugLine("line");
  EXPECT_EQ(env_.person.shown, std::vector<std::string>{"The Debug Files folder could not be created in '" +
                                                        JoinPath("/logs", "") + "'!"});
  EXPECT_EQ(env_.person.notes, std::vector<std::string>(3, "12:00:00 line"));  // the journal still has them
  EXPECT_FALSE(env_.files.Exists(kFile));
}

TEST_F(DebugLogTest, FailingWritesAreIgnoredAndTheFolderIsMadeAgain) {
  Install(5);
  WriteDebugLine("one");
  bool broken = true;
  env_.files.fail = [&broken](const std::string& operation, const std::string&) {
    return broken && operation == "Append" ? "disk full" : "";
  };
  WriteDebugLine("two");
  broken = false;
  WriteDebugLine("three");
  EXPECT_EQ(Log(), "12:00:00 one\n12:00:00 three\n");
  EXPECT_TRUE(env_.person.shown.empty());
}

// A writer whose sink runs when the test says so, as a thread's does.
class HeldLines : public LineWriter {
 public:
  explicit HeldLines(LineSink sink) : sink_(std::move(sink)) {}
  void Write(LogLine line) override { lines.push_back(std::move(line)); }
  void Release() {
    for (const LogLine& line : std::exchange(lines, {})) sink_(line);
  }
  std::vector<LogLine> lines;

 private:
  LineSink sink_;
};

class HeldDebugLogTest : public DebugLogTest {
 protected:
  HeldDebugLogTest() {
    log_ = std::make_unique<DebugLog>(env_.loop, env_.files, env_.person, "zebd", "/logs", 5, false,
                                      [this](LineSink sink) {
                                        auto made = std::make_unique<HeldLines>(std::move(sink));
                                        held_ = made.get();
                                        return made;
                                      });
    log_->Install();
  }
  HeldLines* held_ = nullptr;
};

TEST_F(HeldDebugLogTest, TouchesNoFileItself) {
  {
    const Trace trace("X");
    WriteDebugLine("a");
  }
  EXPECT_EQ(env_.files.operations, 0);
  env_.loop.RunFor(5s);  // the time is that of the line
  held_->Release();
  EXPECT_EQ(Log(), "12:00:00 Started X\n12:00:00     a\n12:00:00 Finished X\n");
}

TEST_F(HeldDebugLogTest, ShowsAFolderThatCannotBeMadeWithTheNextLineAndOnce) {
  env_.files.Put("/logs", "a file in its place");
  WriteDebugLine("lost");
  held_->Release();
  EXPECT_TRUE(env_.person.shown.empty());
  for (int i = 0; i < 3; ++i) WriteDebugLine("no more");
  EXPECT_EQ(env_.person.shown, std::vector<std::string>{"The Debug Files folder could not be created in '" +
                                                        JoinPath("/logs", "") + "'!"});
  EXPECT_TRUE(held_->lines.empty());
}

TEST_F(DebugLogTest, UninstallsItselfOnly) {
  Install(5);
  DebugLog second(env_.loop, env_.files, env_.person, "other", "/logs/", 10);
  second.Install();
  log_.reset();  // no longer the installed one
  EXPECT_TRUE(DebugLevelAllows(10));
  WriteDebugLine("x");
  EXPECT_EQ(PlainLines(env_.files.Contents("/logs/other.20260302.log")), "12:00:00 x\n");
}

TEST_F(DebugLogTest, LevelAtStartUp) {
  const struct {
    const char* commandLine;
    std::int32_t level;
  } cases[] = {{"/DEBUG=MAX", 10},
               {"/debug=normal", 5},
               {"/MINIMIZED /DEBUG=Medium /SILENT", 5},
               {"/DEBUG=NONE", 0},
               {"/DEBUG=off", 0},
               {"/DEBUG=FULL", 10},
               {"/DEBUG", 10},
               {"  /Debug  /SILENT", 10},
               {"/DEBUG=", 10},
               {"", 3},
               {"--home /srv/DEBUG", 3},
               {"/DEBUGGING", 3},
               {"/IMPORT=/DEBUG", 3},
               {"/DEBUG=OFF /DEBUG=MAX", 0}};
  env_.hive.WriteNumber("software\\hexmoor", "debugmode", 3);
  for (const auto& c : cases)
    EXPECT_EQ(DebugLog::StartUpLevel(c.commandLine, env_.hive), c.level) << c.commandLine;
  MemoryHive empty;
  EXPECT_EQ(DebugLog::StartUpLevel("/SILENT", empty), 0);
}

TEST_F(DebugLogTest, FolderAtStartUp) {
  EXPECT_EQ(DebugLog::StartUpFolder(env_.hive, "/data"), JoinPath("/data", "DebugFiles"));
  env_.hive.WriteText(kRoot, "DebugPath", "/var/log/zeb");
  EXPECT_EQ(DebugLog::StartUpFolder(env_.hive, "/data"), "/var/log/zeb");
}

}  // namespace
}  // namespace zeb
