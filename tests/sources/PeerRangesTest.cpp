#include <gtest/gtest.h>

#include "sources/PeerRanges.h"

namespace zeb {
namespace {

TEST(PeerRanges, DefaultIsTheNeighbourhood) {
  const PeerRanges peers = PeerRanges::Default();
  for (const char* address :
       {"127.0.0.1", "::1", "10.255.255.255", "172.16.0.0", "172.31.255.255", "192.168.1.2", "169.254.9.9",
        "fe80::1%eth0", "febf::1", "fd12:3456::1", "::ffff:10.0.0.1"})
    EXPECT_TRUE(peers.Contains(address)) << address;
  for (const char* address :
       {"11.0.0.0", "9.255.255.255", "172.15.255.255", "172.32.0.0", "192.169.0.0", "8.8.8.8", "fec0::1",
        "2001:db8::1", "::", "", "localhost", "10.0.0", "10.0.0.1.2"})
    EXPECT_FALSE(peers.Contains(address)) << address;
}

TEST(PeerRanges, ReadsListsAndNamesBadEntries) {
  std::vector<std::string> bad;
  const PeerRanges peers = PeerRanges::Parse(
      " 192.0.2.7 ,2001:db8:1::/48,, 198.51.100.128/25,10.0.0.1/33,300.1.1.1,x,1:2:3:4:5:6:7:8:9,1::2::3,"
      "12345::,1.2.3.4/,::1/129,1:,10.0.0.1/-1,203.0.113.0/31",
      bad);
  EXPECT_EQ(bad, (std::vector<std::string>{"10.0.0.1/33", "300.1.1.1", "x", "1:2:3:4:5:6:7:8:9", "1::2::3",
                                           "12345::", "1.2.3.4/", "::1/129", "1:", "10.0.0.1/-1"}));
  struct Case {
    const char* address;
    bool inside;
  };
  for (const Case& c : {Case{"192.0.2.7", true},
                        {"192.0.2.6", false},
                        {"2001:db8:1:ffff::5", true},
                        {"2001:DB8:2::", false},
                        {"198.51.100.127", false},
                        {"198.51.100.128", true},
                        {"203.0.113.1", true},
                        {"203.0.113.2", false},
                        {"127.0.0.1", false}})
    EXPECT_EQ(peers.Contains(c.address), c.inside) << c.address;
}

TEST(PeerRanges, NothingGivenMeansTheDefaultAndNothingGoodMeansNobody) {
  std::vector<std::string> bad;
  EXPECT_TRUE(PeerRanges::Parse(" , ", bad).Contains("127.0.0.1"));
  EXPECT_TRUE(bad.empty());
  EXPECT_FALSE(PeerRanges::Parse("lan", bad).Contains("127.0.0.1"));
  EXPECT_TRUE(PeerRanges::Parse("0.0.0.0/0,::/0", bad).Contains("8.8.8.8"));
}

}  // namespace
}  // namespace zeb
