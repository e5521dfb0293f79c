#include <gtest/gtest.h>

#include "app/ConsoleOperator.h"
#include "platform/DirectLineWriter.h"
#include "platform/simulated/SimulatedLoop.h"

namespace zeb {
namespace {

class ConsoleOperatorTest : public testing::Test {
 protected:
  std::string written;
  DirectLineWriter journal{[this](const LogLine& line) {
    written += line.time + line.text + '\n';
    return true;
  }};
};

TEST_F(ConsoleOperatorTest, WritesOneLineForEverythingWhateverItHolds) {
  ConsoleOperator person(journal);
  person.Note("plain");
  person.Note("two\r\nlines \x1B[2J \x7F");
  person.Show(MessageIcon::kExclamation, "A problem : \n\n\"Disk full\"");
  EXPECT_EQ(written, "plain\ntwo lines [2J \nA problem : \"Disk full\"\n");
  written.clear();
  const SimulatedLoop loop;
  ConsoleOperator(journal, &loop).Note("timed");
  EXPECT_EQ(written, "12:00:00 timed\n");
}

TEST_F(ConsoleOperatorTest, SaysYesAtOnceAndWritesNoQuestionDown) {
  int yes = 0;
  ConsoleOperator(journal).Ask("Are you sure?", [&](bool answer) { yes += answer ? 1 : 100; });
  EXPECT_EQ(yes, 1);
  EXPECT_EQ(written, "");
}

}  // namespace
}  // namespace zeb
