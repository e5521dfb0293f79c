#include <gtest/gtest.h>

#include "history/HistoryRequest.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::pair<std::string, std::string>>;

constexpr std::int64_t kNow = 1795500000000;  // 2026-11-24 06:00:00 UTC

std::string Read(const Words& words) {
  const auto read = ReadHistoryRequest(words, {kNow, 1h}, [](WallTime) { return 1h; });
  if (!read) return read.Reason();
  const HistoryFilter& filter = read.Value().filter;
  const auto hours = [](std::int64_t utc) {
    return utc == HistoryFilter().to ? std::string("end") : std::to_string((utc - kNow) / 60000);
  };
  return std::to_string(filter.service) + " [" + filter.output + "] " + hours(filter.from) + " " +
         hours(filter.to) + (read.Value().songs ? " songs " : " ") + std::to_string(read.Value().most);
}

TEST(HistoryRequestTest, ReadsTheWords) {
  EXPECT_EQ(Read({}), "0 [] -1440 end 1000");
  EXPECT_EQ(Read({{"service", "3"}, {"output", "dab2"}, {"limit", "10"}}), "3 [DAB2] -1440 end 10");
  EXPECT_EQ(Read({{"from", "2026-11-24 06:00"}, {"songs", "1"}}), "0 [] -60 end songs 1000");
  EXPECT_EQ(Read({{"from", "2026-11-24T06:00:00Z"}, {"to", "2026-11-24T07:00:00Z"}}), "0 [] 0 60 1000");
  EXPECT_EQ(Read({{"to", "2026-11-24T06:00:00Z"}}), "0 [] -1440 0 1000");
  EXPECT_EQ(Read({{"service", ""}, {"songs", "0"}}), "0 [] -1440 end 1000");
}

TEST(HistoryRequestTest, NamesTheWordAtFault) {
  EXPECT_EQ(Read({{"service", "0"}}), "service takes the number of a service, not '0'");
  EXPECT_EQ(Read({{"service", "1 OR 1"}}), "service takes the number of a service, not '1 OR 1'");
  EXPECT_EQ(Read({{"service", "99999999999"}}), "service takes the number of a service, not '99999999999'");
  EXPECT_EQ(Read({{"output", "File"}}), "output takes an output such as File2, not 'File'");
  EXPECT_EQ(Read({{"output", "File1;"}}), "output takes an output such as File2, not 'File1;'");
  EXPECT_EQ(Read({{"from", "now"}}), "from takes a moment, \"YYYY-MM-DD hh:mm[:ss]\" or RFC 3339, not 'now'");
  EXPECT_EQ(Read({{"limit", "1001"}}), "limit takes 1 to 1000, not '1001'");
  EXPECT_EQ(Read({{"songs", "yes"}}), "songs takes 0 or 1, not 'yes'");
  EXPECT_EQ(Read({{"songs", "1"}, {"output", "File1"}}), "songs does not go with output");
  EXPECT_EQ(Read({{"service", "1"}, {"last", "101"}}), "last takes 1 to 100, not '101'");
  EXPECT_EQ(Read({{"last", "5"}}), "last needs a service");
  EXPECT_EQ(Read({{"days", "3"}}),
            "the history has no 'days'; it takes service, output, from, to, songs, limit and last");
}

}  // namespace
}  // namespace zeb
