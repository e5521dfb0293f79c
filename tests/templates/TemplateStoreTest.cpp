#include <gtest/gtest.h>

#include <chrono>

#include "platform/simulated/SimulatedFiles.h"
#include "templates/TemplateStore.h"

namespace zeb {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class TemplateStoreTest : public testing::Test {
 protected:
  TemplateStoreTest() {
    files.fail = [this](const std::string& operation, const std::string&) {
      reads += operation == "Read" ? 1 : 0;
      return failure;
    };
    files.Put("/t/a", "one");
  }
  std::string Load(const std::string& path = "/t/a") {
    const auto page = store.Load(files, path);
    return page ? page.Value()->Text() : page.Reason();
  }
  // Until nothing but a change makes it be read again.
  void Settle(const std::string& path) {
    Load(path);
    files.now += seconds(2);
    Load(path);
    reads = 0;
  }

  SimulatedFiles files;
  TemplateStore store;
  std::string failure;
  int reads = 0;
};

TEST_F(TemplateStoreTest, AFileIsReadUntilItsStateIsTwoSecondsOld) {
  for (const int at : {0, 1, 1999, 2000}) {
    files.now = milliseconds(at);
    EXPECT_EQ(Load(), "one");
  }
  EXPECT_EQ(reads, 4);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Load(), "one");
  EXPECT_EQ(reads, 4);
}

TEST_F(TemplateStoreTest, AnEditIsSeenAtTheNextUse) {
  Settle("/t/a");
  files.Put("/t/a", "two");
  EXPECT_EQ(Load(), "two");
  // Within the same tick of the clock, and of the same size.
  const std::int64_t tick = files.Stat("/t/a")->modified;
  files.now += milliseconds(1900);
  files.Put("/t/a", "six");
  files.SetModified("/t/a", tick);
  EXPECT_EQ(Load(), "six");
}

TEST_F(TemplateStoreTest, AnotherFileOfTheSameSizeAndTimesIsSeen) {
  files.SetModified("/t/a", 77);
  Settle("/t/a");
  ASSERT_TRUE(files.FindTarget("/t/a", {}).Value()->Replace("two"));
  files.SetModified("/t/a", 77);
  EXPECT_EQ(Load(), "two");
}

TEST_F(TemplateStoreTest, APageThatIsReadAgainStaysCompiled) {
  const auto first = store.Load(files, "/t/a"), again = store.Load(files, "/t/a");
  EXPECT_EQ(reads, 2);
  EXPECT_EQ(first.Value(), again.Value());
  // Nor is one that is in use changed.
  files.Put("/t/a", "two");
  EXPECT_EQ(Load(), "two");
  EXPECT_EQ(first.Value()->Text(), "one");
}

TEST_F(TemplateStoreTest, AFileThatCannotBeReadIsNotKept) {
  Settle("/t/a");
  ASSERT_TRUE(files.Delete("/t/a"));
  EXPECT_EQ(Load(), "cannot read '/t/a': No such file or directory");
  EXPECT_EQ(store.Files(), 0u);
  EXPECT_EQ(store.Bytes(), 0u);
  files.Put("/t/a", "back");
  failure = "disk on fire";
  EXPECT_EQ(Load(), "cannot read '/t/a': disk on fire");
  failure.clear();
  EXPECT_EQ(Load(), "back");
}

TEST_F(TemplateStoreTest, WhatWasUsedLeastRecentlyGoesFirst) {
  for (const std::string path : {"/t/b", "/t/c"}) files.Put(path, path);
  TemplateStore two(TemplateStore::kMostBytes, 2);
  const auto load = [&](const std::string& path) { EXPECT_TRUE(two.Load(files, path)); };
  for (int i = 0; i < 2; ++i, files.now += seconds(2)) {
    load("/t/a");
    load("/t/b");
  }
  load("/t/a");
  load("/t/c");
  EXPECT_EQ(two.Files(), 2u);
  reads = 0;
  load("/t/a");
  EXPECT_EQ(reads, 0);
  load("/t/b");
  EXPECT_EQ(reads, 1);
}

TEST_F(TemplateStoreTest, BytesAreBounded) {
  TemplateStore small(100'000);
  for (int i = 0; i < 50; ++i) {
    const std::string path = "/t/" + std::to_string(i);
    files.Put(path, std::string(10'000, 'x'));
    ASSERT_TRUE(small.Load(files, path));
    ASSERT_LE(small.Bytes(), 100'000u);
  }
  EXPECT_GE(small.Files(), 5u);
  // One that is too large alone is given all the same.
  files.Put("/t/large", std::string(200'000, 'x'));
  ASSERT_TRUE(small.Load(files, "/t/large"));
  EXPECT_LE(small.Bytes(), 100'000u);
}

// What a page takes once it is compiled counts too.
TEST_F(TemplateStoreTest, CompiledPagesCount) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "<ZEB_NOW_" + std::to_string(i) + ">";
  files.Put("/t/a", text);
  Settle("/t/a");
  const std::size_t before = store.Bytes();
  UploadFileList uploads;
  ASSERT_TRUE(store.Load(files, "/t/a").Value()->Expand({}, {}, "", uploads));
  Load();
  EXPECT_GT(store.Bytes(), before + text.size());
}

}  // namespace
}  // namespace zeb
