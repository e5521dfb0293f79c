#include <gtest/gtest.h>

#include <memory>

#include "platform/simulated/MemoryHive.h"
#include "tests/platform/HiveContract.h"

namespace zeb {
namespace {

struct HiveInMemory : testing::Test {
  std::unique_ptr<SettingsHive> hive = std::make_unique<MemoryHive>();
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, HiveContract, HiveInMemory);

}  // namespace
}  // namespace zeb
