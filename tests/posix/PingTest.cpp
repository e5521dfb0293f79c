#include <gtest/gtest.h>

#include "platform/system/Ping.h"

namespace zeb {
namespace {

TEST(Ping, HearsThisMachineAndNoUnknownOne) {
  EXPECT_TRUE(PingHost("127.0.0.1"));
  EXPECT_FALSE(PingHost("no-such-host.invalid"));
  EXPECT_FALSE(PingHost(""));
}

}  // namespace
}  // namespace zeb
