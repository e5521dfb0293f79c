// Problem reports, looping hex escapes and temporary files.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <system_error>

#include "diagnostics/hxGeneral.h"
#include "platform/simulated/TestEnvironment.h"
#include "tests/diagnostics/PlainLines.h"
#include "text/Encodings.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

class ProblemsTest : public testing::Test {
 protected:
  void Install(std::int32_t level) {
    log_ = std::make_unique<DebugLog>(env_.loop, env_.files, env_.person, "zebd", "/logs", level);
    log_->Install();
  }
  std::string Log() { return PlainLines(env_.files.Contents("/logs/zebd.20260302.log")); }

  TestEnvironment env_;
  std::unique_ptr<DebugLog> log_;
};

TEST_F(ProblemsTest, ShownUnlessQuietAndAlwaysLogged) {
  Install(5);
  ShowProblem("  opening the serial port ", "  ", Report::kShown);
  ShowProblem("saving", " Disk full ", Report::kQuietly);
  EXPECT_EQ(env_.person.shown, std::vector<std::string>{"There was a problem opening the serial port"});
  EXPECT_EQ(Log(),
            "12:00:00 There was a problem opening the serial port\n"
            "12:00:00 There was a problem saving and the error's description was reported as : \n\n\"Disk "
            "full\"\n");
}

TEST_F(ProblemsTest, ShownWithTheLogOff) {
  ShowProblem("a", "b", Report::kShown);  // nobody to show it to
  Install(0);
  ReportError("closing", "Bad file", 52, Report::kShown);
  ReportError("closing", "", 0, Report::kShown);
  EXPECT_EQ(
      env_.person.shown,
      (std::vector<std::string>{
          "There was a problem closing and the error's description was reported as : \n\n\"Bad file (52)\"",
          "There was a problem closing"}));
  EXPECT_EQ(Log(), "");
}

TEST_F(ProblemsTest, ExceptionsInFlight) {
  Install(0);
  const auto report = [](const std::function<void()>& work) {
    try {
      work();
    } catch (...) {
      ReportException("working", Report::kShown);
    }
  };
  report([] { throw std::runtime_error("went wrong"); });
  report([] { throw std::system_error(2, std::generic_category(), "open"); });
  report([] { throw 5; });
  ReportException("working", Report::kShown);
  const std::string start =
      "There was a problem working and the error's description was reported as : \n\n\"";
  EXPECT_EQ(env_.person.shown,
            (std::vector<std::string>{start + "went wrong\"", start + "open: No such file or directory (2)\"",
                                      start + "unknown error\"", "There was a problem working"}));
}

TEST(ConvertHexEscapes, Cases) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {
      {"{0D}{0A}", "\r\n"},
      {"a{0d}b", "a\rb"},  // the second digit may be small
      {"a{d0}b", "ab"},    // the first may not
      {"{x}yz", "z"},      // loses the four characters
      {"{x}", ""},
      {"{", ""},
      {"a{", "a"},
      {"{41", ""},
      {"{4", ""},
      {"{1G}", "\x01"},  // as far as it parses
      {"{4é}x", "\x04x"},
      {"{A}}", "\n"},  // any character may be second
      {"{A{}x", "\nx"},
      {"{7B}34}x", "4x"},   // {34}: the produced brace is examined again
      {"{7B}{7B}x", "}x"},  // "{{7B" goes, "}x" stays
      {"{7B}", ""},
      {"{7b}0D}", "\r"},
      {"{éé€}x", "}x"},  // characters, not bytes
      {"{E9}{80}{81}", "é€\u0081"},
      {"{C3}{A9}", "Ã©"},
      {"no escapes }", "no escapes }"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(ConvertHexEscapes(c.text), c.expected) << c.text;
  EXPECT_EQ(ConvertHexEscapes("{0G}{00}"), std::string(2, '\0'));
}

// The rule as it is told: first brace, four characters, again.
std::string ConvertSlowly(std::string text) {
  for (std::size_t at; (at = text.find('{')) != std::string::npos;) {
    const std::size_t size = SkipCharacters(text, at, 4) - at;
    const std::string piece = text.substr(at, size);
    std::string made;
    const std::string capitals = "0123456789ABCDEF";
    if (CountCharacters(piece) == 4 && piece.back() == '}' && capitals.find(piece[1]) != std::string::npos) {
      const auto code = static_cast<char>(std::stoul(piece.substr(1, 2), nullptr, 16));
      made = DecodeLenient(std::string(1, code));
    }
    text.replace(at, size, made);
  }
  return text;
}

TEST(ConvertHexEscapes, IsTheSlowRule) {
  std::mt19937 random(3);
  const std::string_view pieces[] = {"{", "}", "7", "B", "4", "é", "{7B}", "{", "x", "b", "E"};
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (std::size_t n = random() % 16; n > 0; --n) text += pieces[random() % std::size(pieces)];
    ASSERT_EQ(ConvertHexEscapes(text), ConvertSlowly(text)) << text;
  }
}

TEST_F(ProblemsTest, TemporaryFiles) {
  Install(5);
  std::vector<std::string> trace;
  const Result<std::string> first = GetTempFile(env_.files, "Z E-B 3/é", &trace);
  EXPECT_EQ(Log(), "");  // it may be called on a worker thread
  WriteDebugLines(trace);
  const Result<std::string> second = GetTempFile(env_.files, "Z E-B 3");
  ASSERT_TRUE(first && second);
  EXPECT_TRUE(first.Value().starts_with("/tmp/ZEB3")) << first.Value();
  EXPECT_NE(first.Value(), second.Value());
  EXPECT_TRUE(env_.files.Exists(first.Value()));
  EXPECT_TRUE(
      Log().starts_with("12:00:00 Start GetTempFile\n"
                        "12:00:00 Get the user's temp path\n"
                        "12:00:00 Call GetTempFilename\n"
                        "12:00:00 Process the return\n"
                        "12:00:00 End GetTempFile\n"));
}

TEST_F(ProblemsTest, NoTemporaryFile) {
  Install(5);
  env_.files.fail = [](const std::string& operation, const std::string&) {
    return operation == "MakeTempFile" ? "cannot write to '/tmp': disk full" : "";
  };
  std::vector<std::string> trace;
  const Result<std::string> file = GetTempFile(env_.files, "--", &trace);
  WriteDebugLines(trace);
  ASSERT_FALSE(file);
  EXPECT_NE(Log().find("Error getting a temporary file name : " + file.Reason() + "\n"), std::string::npos);
  EXPECT_TRUE(Log().ends_with("End GetTempFile\n"));
  EXPECT_TRUE(env_.person.shown.empty());
}

}  // namespace
}  // namespace zeb
