// Real processes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/posix/PosixProcesses.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class PosixProcessesTest : public testing::Test {
 protected:
  PosixProcessesTest() {
    char name[] = "/tmp/zeb-processes-XXXXXX";
    folder = mkdtemp(name);
  }
  ~PosixProcessesTest() override { std::filesystem::remove_all(folder); }
  std::string Script(const std::string& text) const {
    const std::string path = folder + "/script";
    std::ofstream(path) << "#!/bin/sh\n" << text << "\n";
    chmod(path.c_str(), 0755);
    return path;
  }
  std::string Contents(const std::string& name) const {
    std::ifstream file(folder + "/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  Outcome Run(const std::string& program, Duration limit = 10s) {
    return processes.Run({program, {{"ZEB_PROBLEM", "it's $HOME; `x`"}, {"OUT", folder}}, limit});
  }

  std::string folder;
  PosixProcesses processes;
};

TEST_F(PosixProcessesTest, GetTheirVariablesAndNothingElseOfOurs) {
  const int ours = open("/dev/null", O_RDONLY);  // without close-on-exec
  ASSERT_GE(ours, 3);
  const std::string script = Script(
      "printf '%s' \"$ZEB_PROBLEM\" > $OUT/problem; ls /proc/$$/fd > $OUT/fds; echo noise; echo noise >&2; "
      "printf '%s' \"$PATH\" > $OUT/path");
  const Outcome ran = Run(script);
  close(ours);
  EXPECT_TRUE(ran) << ran.Reason();
  EXPECT_EQ(Contents("problem"), "it's $HOME; `x`");
  EXPECT_EQ(Contents("path"), getenv("PATH"));
  const std::string fds = Contents("fds");
  EXPECT_EQ(fds.find("\n" + std::to_string(ours) + "\n"), std::string::npos) << fds;
}

TEST_F(PosixProcessesTest, WhatGoesWrongIsToldWithTheProgramsName) {
  const std::string script = Script("exit 3");
  EXPECT_EQ(Run(script).Reason(), "'" + script + "' ended with status 3");
  EXPECT_EQ(Run(Script("kill -TERM $$")).Reason(), "'" + script + "' was ended by signal 15");
  EXPECT_EQ(Run(folder + "/none").Reason(), "'" + folder + "/none' cannot be run: No such file or directory");
  EXPECT_EQ(Run("date --version").Reason(),
            "'date --version' cannot be run: No such file or directory");  // no shell
  chmod(script.c_str(), 0600);
  EXPECT_EQ(Run(script).Reason(), "'" + script + "' cannot be run: Permission denied");
}

TEST_F(PosixProcessesTest, AreKilledAfterTheirLimitWithWhatTheyHaveStarted) {
  const auto begin = std::chrono::steady_clock::now();
  const std::string script = Script("(sleep 2; echo late > $OUT/late) & sleep 60");
  EXPECT_EQ(Run(script, 300ms).Reason(), "'" + script + "' was killed: it had not ended in time");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
  EXPECT_FALSE(std::filesystem::exists(folder + "/late"));
}

}  // namespace
}  // namespace zeb
