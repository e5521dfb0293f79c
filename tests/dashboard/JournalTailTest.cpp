#include <gtest/gtest.h>

#include "dashboard/JournalTail.h"
#include "platform/simulated/TestEnvironment.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

TEST(JournalTailTest, KeepsTheLastLinesAndHandsAllOfThemOn) {
  TestEnvironment ports;
  JournalTail tail(ports.person, ports.loop);
  std::vector<std::string> told;
  tail.onLine = [&](const JournalTail::Line& line) { told.push_back(line.text); };
  for (std::size_t i = 0; i < JournalTail::kMost + 5; ++i) tail.Note("line " + std::to_string(i));
  EXPECT_EQ(tail.Lines().size(), JournalTail::kMost);
  EXPECT_EQ(tail.Lines().front().text, "line 5");
  EXPECT_EQ(told.size(), JournalTail::kMost + 5);
  EXPECT_EQ(ports.person.notes.size(), JournalTail::kMost + 5);
  tail.Show(MessageIcon::kWarning, "two\nlines \xE9");
  EXPECT_EQ(ports.person.shown, (std::vector<std::string>{"two\nlines \xE9"}));
  EXPECT_EQ(tail.Lines().back().text, "two lines é");
  tail.Note(std::string(100'000, 'x'));
  EXPECT_EQ(CountCharacters(tail.Lines().back().text), 1000u);
  bool answer = false;
  tail.Ask("sure?", [&](bool yes) { answer = yes; });
  EXPECT_TRUE(answer);
}

}  // namespace
}  // namespace zeb
