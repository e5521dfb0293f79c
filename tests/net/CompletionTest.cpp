// The completion scripts in real shells.

#include "tests/net/Station.h"

namespace zeb {
namespace {

class CompletionTest : public Station {
 protected:
  CompletionTest() { WriteFile(Path("script.bash"), Zebctl({"completion", "bash"}).output); }

  // What bash offers for the words, the last of which is being written; "<default>" for what it does itself.
  std::string Offered(const std::string& words) const {
    const std::string test =
        "source " + Path("script.bash") +
        "\ncompopt() { printf '<%s> ' \"$2\"; }\ncomplete -p zebctl >/dev/null || exit 9\n"
        "COMP_WORDS=(" +
        words + ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_zeb " +
        "\"${COMP_WORDS[0]}\"\nprintf '%s ' \"${COMPREPLY[@]}\"";
    const Finished done = RunProgram({"/bin/bash", "--norc", "-c", test});
    EXPECT_EQ(done.status, 0) << done.error;
    EXPECT_EQ(done.error, "") << words;
    return done.output;
  }
};

TEST_F(CompletionTest, BashOffersWhatMayComeNext) {
  const std::pair<std::string, std::string> cases[] = {
      {"zebctl set", "settings set setup "},
      {"zebctl -", "--help -h --version --home "},
      {"zebctl settings ''", "list get set delete import export "},
      {"zebctl --home /d settings im", "import "},
      {"zebctl --home ''", "<dirnames>  "},
      {"zebctl settings import ''", "<default>  "},
      {"zebctl lint one.html ''", "<default>  "},
      {"zebctl lint --escape ''", "html xml json auto "},
      {"zebctl lint --escape = ''", "html xml json auto "},
      {"zebctl lint --escape =", "html xml json auto "},
      {"zebctl lint --escape=j", "--escape=json "},
      {"zebctl lint --escape html --", "--help --escape --as --json "},
      {"zebctl lint --as ''", " "},
      {"zebctl output add 1 F", "File "},
      {"zebctl set promote ''", "next coming "},
      {"zebctl send -- -", " "},
      {"zebctl completion ''", "bash zsh "},
      {"zebctl help ta", "tags "},
      {"zebctl status ''", "--help -h --json --watch "},
      {"zeb-labelserver --config ''", "<default>  "},
      {"/usr/bin/zeb-labelserver --p", "--port "},
      {"zebd --", "--home --version --help "},
      {"zeb --home ''", "<dirnames>  "},
      {"zebd /SILENT /S", "/SILENT /SCHEDULE "}};
  for (const auto& [words, offered] : cases) EXPECT_EQ(Offered(words), offered) << words;
}

TEST_F(CompletionTest, BashAsksForNamesAndLeavesAProgramThatHangs) {
  AddService(1, control, "", "now.txt");
  const std::string program = std::string(ZEB_BUILD_DIR) + "/zebctl";
  EXPECT_EQ(Offered(program + " --home " + Path("") + " test ''"), "1 ");
  EXPECT_EQ(Offered(program + " --home " + Path("") + " test 1 ''"), "File1 ");
  WriteFile(Path("zebctl"), "#!/bin/bash\ntrap '' TERM\nsleep 100\n");
  std::filesystem::permissions(Path("zebctl"), std::filesystem::perms::all);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Offered(Path("zebctl") + " update ''"), " ");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(CompletionTest, ZshTakesTheScriptAndCompletes) {
  ASSERT_TRUE(std::filesystem::exists("/bin/zsh")) << "zsh is not installed: scripts/setup test";
  WriteFile(Path("_zebctl"), Zebctl({"completion", "zsh"}).output);
  EXPECT_EQ(RunProgram({"/bin/zsh", "-n", Path("_zebctl")}).error, "");
  // A shell of its own, in which Tab is pressed.
  WriteFile(Path("press"),
            "zmodload zsh/zpty\nzpty one zsh -f -i\n"
            "zpty -w one 'PS1=; fpath=(" +
                Path("") +
                " $fpath); autoload -U compinit; compinit -u -D; "
                "echo rea\"\"dy'\nzpty -r -m one line '*ready*'\n"
                "zpty -w -n one $'zebctl lint --esc\\t ht\\t; echo do\"\"ne\\n'\n"
                "zpty -r -m one line '*done*'\nprint -r -- $line\nzpty -d one\n");
  const Finished done = RunProgram({"/usr/bin/timeout", "20", "/bin/zsh", "-f", Path("press")});
  EXPECT_NE(done.output.find("--escape"), std::string::npos) << done.output << done.error;
  EXPECT_NE(done.output.find("html"), std::string::npos) << done.output << done.error;
}

}  // namespace
}  // namespace zeb
