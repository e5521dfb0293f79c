#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "platform/posix/SqliteHive.h"
#include "tests/platform/HiveContract.h"

namespace zeb {
namespace {

struct HiveInFile : testing::Test {
  HiveInFile() {
    std::string name = "/tmp/zeb-hive-XXXXXX";
    folder = mkdtemp(name.data());
    auto opened = SqliteHive::Open(folder + "/settings.db");
    EXPECT_TRUE(opened.Ok()) << opened.Reason();
    hive = std::move(opened.Value());
  }
  ~HiveInFile() override {
    hive.reset();
    std::filesystem::remove_all(folder);
  }
  std::string folder;
  std::unique_ptr<SettingsHive> hive;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Sqlite, HiveContract, HiveInFile);

}  // namespace
}  // namespace zeb
