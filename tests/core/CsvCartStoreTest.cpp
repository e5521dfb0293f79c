#include <gtest/gtest.h>

#include "core/CsvCartStore.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

class CsvCartStoreTest : public testing::Test {
 protected:
  CsvCartStoreTest() { EXPECT_TRUE(world.files.CreateFolders("/data").Ok()); }
  void Write(const std::string& text) { ASSERT_TRUE(world.files.Write("/data/Carts.csv", text).Ok()); }
  std::string Line(int number, int line) {
    const std::optional<Cart> cart = carts.Find(number);
    return cart ? cart->lines.at(static_cast<std::size_t>(line) - 1) : "(none)";
  }

  TestEnvironment world;
  CsvCartStore carts{world.files, world.person, "/data/Carts.csv"};
};

TEST_F(CsvCartStoreTest, ReadsQuotedFieldsHeadingsAndBothLineEnds) {
  Write(
      "number,line1,line2,line3\r\n"
      "12,\"Smith, \"\"Jo\"\"\",\"two\r\nlines\",x,\"ITitle=\"\"A B\"\" IType=2\"\r\n"
      " 7 ,only\n"
      "\n"
      "12x,no number\n"
      "99999999999,too big\n"
      "-3,minus\n"
      "8,ab\"c,\"un\"quoted,last");
  EXPECT_EQ(Line(12, 1), "Smith, \"Jo\"");
  EXPECT_EQ(Line(12, 2), "two\r\nlines");
  EXPECT_EQ(carts.Find(12)->serialisation, "ITitle=\"A B\" IType=2");
  EXPECT_EQ(Line(7, 1), "only");
  EXPECT_EQ(Line(7, 3), "");
  EXPECT_EQ(Line(-3, 1), "minus");
  EXPECT_EQ(Line(8, 1), "ab\"c");
  EXPECT_EQ(Line(8, 2), "unquoted");
  EXPECT_EQ(Line(8, 3), "last");
  EXPECT_FALSE(carts.Find(0));
}

TEST_F(CsvCartStoreTest, FollowsTheFile) {
  EXPECT_EQ(Line(1, 1), "(none)");
  Write("1,first\n1,again\n");
  EXPECT_EQ(Line(1, 1), "again");
  Write("1,later\n");
  EXPECT_EQ(Line(1, 1), "later");
  ASSERT_TRUE(world.files.Delete("/data/Carts.csv").Ok());
  EXPECT_EQ(Line(1, 1), "(none)");
}

TEST_F(CsvCartStoreTest, ReadsAnUnchangedFileOnceAndKeepsItsCartsWhenReadingFails) {
  Write("1,first\n");
  int reads = 0;
  bool broken = false;
  world.files.fail = [&](const std::string& operation, const std::string&) -> std::string {
    if (operation != "Read") return "";
    ++reads;
    return broken ? "Input/output error" : "";
  };
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Line(1, 1), "first");
  EXPECT_EQ(reads, 1);

  broken = true;
  Write("1,second\n");
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Line(1, 1), "first");
  ASSERT_EQ(world.person.notes.size(), 1u);
  EXPECT_NE(world.person.notes[0].find("/data/Carts.csv"), std::string::npos);
  broken = false;  // the lock is gone, the file as it was
  EXPECT_EQ(Line(1, 1), "second");
}

TEST_F(CsvCartStoreTest, TakesFilesFromOldSpreadsheetsAndUnclosedQuotes) {
  Write("5,Caf\xE9\n6,\"never closed\n7,x\n");
  EXPECT_EQ(Line(5, 1), "Café");
  EXPECT_EQ(Line(6, 1), "never closed\n7,x\n");
  EXPECT_EQ(Line(7, 1), "(none)");
}

}  // namespace
}  // namespace zeb
