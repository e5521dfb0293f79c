#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "platform/system/LocalZone.h"
#include "text/MomentText.h"

namespace zeb {
namespace {

class LocalZoneTest : public testing::Test {
 protected:
  void Zone(const char* rule) {
    ::setenv("TZ", rule, 1);
    ::tzset();
  }
  void SetUp() override {
    const char* zone = std::getenv("TZ");
    if (zone != nullptr) before = zone;
  }
  void TearDown() override {
    if (before.empty())
      ::unsetenv("TZ");
    else
      ::setenv("TZ", before.c_str(), 1);
    ::tzset();
  }
  static std::int64_t Minutes(const char* moment) {
    return std::chrono::duration_cast<std::chrono::minutes>(UtcOffsetAt(ReadMomentText(moment)->wall))
        .count();
  }
  std::string before;
};

TEST_F(LocalZoneTest, KnowsWhatTheClocksSaid) {
  Zone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(Minutes("2026-03-29 01:59"), 60);
  EXPECT_EQ(Minutes("2026-03-29 03:00"), 120);
  EXPECT_EQ(Minutes("2026-07-01 12:00"), 120);
  EXPECT_EQ(Minutes("2026-10-25 03:00"), 60);
  EXPECT_EQ(Minutes("2026-11-24 08:14"), 60);
  Zone("XXX9:30");
  EXPECT_EQ(Minutes("2026-11-24 08:14"), -570);
  Zone("UTC0");
  EXPECT_EQ(Minutes("2026-11-24 08:14"), 0);
}

}  // namespace
}  // namespace zeb
