// zebctl setup as a station uses it: at a terminal and by options, beside a zebd that runs.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/net/Station.h"

namespace zeb {
namespace {

class SetupTest : public Station {
 protected:
  // At a terminal: what is answered behind each text, and all that was to be seen.
  std::string Converse(const std::vector<std::pair<std::string, std::string>>& answers, int& status) const {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
      const std::string program = Program("zebctl"), home = folder.string();
      execl(program.c_str(), program.c_str(), "--home", home.c_str(), "setup", nullptr);
      _exit(127);
    }
    std::string seen;
    const auto readUntil = [&](const std::string& text, std::size_t from) {
      char bytes[4096];
      for (pollfd wait{terminal, POLLIN, 0};
           seen.find(text, from) == std::string::npos && poll(&wait, 1, 20000) > 0;) {
        const ssize_t count = read(terminal, bytes, sizeof bytes);
        if (count <= 0) return;
        seen.append(bytes, static_cast<std::size_t>(count));
      }
    };
    for (const auto& [question, answer] : answers) {
      const std::size_t from = seen.size();
      readUntil(question, from);
      EXPECT_NE(seen.find(question, from), std::string::npos) << question << "\n" << seen;
      const std::string line = answer + "\n";
      EXPECT_EQ(write(terminal, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    }
    readUntil("(never said)", 0);
    waitpid(child, &status, 0);
    close(terminal);
    return seen;
  }
};

TEST_F(SetupTest, FromNothingToATitleOnAPageWhileZebdRuns) {
  std::filesystem::create_directories(folder / "www");
  ASSERT_EQ(Zebctl({"settings", "set", "", "DashboardPort", "0", "--number"}).status, 0);
  Start();
  const Finished done = Zebctl({"setup", "--name", "Radio X", "--web-folder", Path("www"), "--yes"});
  ASSERT_EQ(done.status, 0) << done.output << done.error;
  EXPECT_NE(done.output.find("The zebd that runs has taken it."), std::string::npos) << done.output;
  ASSERT_TRUE(zebd->WaitForError("Settings read again, 1 service"));
  ASSERT_EQ(Zebctl({"set", "current", "--title", "Paper & Moons", "--artist", "Ada"}).status, 0);
  EXPECT_NE(AwaitPage("www/now.html", "Paper &amp; Moons").find("<h2 id=\"title\">Paper &amp; Moons</h2>"),
            std::string::npos);
  EXPECT_NE(AwaitPage("www/now.json", "Paper & Moons").find("\"title\": \"Paper & Moons\""),
            std::string::npos);
}

TEST_F(SetupTest, AtATerminalPasswordsAreNotShownAndCtrlDStoresNothing) {
  int status = 0;
  const std::string cut =
      Converse({{"station's name", "Radio X"}, {"Which [", ""}, {"Which [", "\x04"}}, status);
  EXPECT_EQ(WEXITSTATUS(status), 1) << cut;
  EXPECT_NE(cut.find("nothing is stored"), std::string::npos) << cut;
  EXPECT_EQ(Zebctl({"service", "list"}).output, "");
  const std::string all = Converse({{"station's name", "Radio X"},
                                    {"Which [", ""},
                                    {"Which [", "dab"},
                                    {"label server", "127.0.0.1:1"},
                                    {"name there", ""},
                                    {"password", "hidden-word"},
                                    {"Which [", "keep"},
                                    {"Anything else", "n"},
                                    {"Store this", ""}},
                                   status);
  EXPECT_EQ(WEXITSTATUS(status), 0) << all;
  EXPECT_EQ(all.find("hidden-word"), std::string::npos);
  EXPECT_EQ(Zebctl({"output", "list", "1"}).output, "DAB1  127.0.0.1 (Radio_X)\n");
}

}  // namespace
}  // namespace zeb
