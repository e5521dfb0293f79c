// PeerRanges: a set of IP addresses, given as single addresses and CIDR ranges, IPv4 and IPv6.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

// An address as IPv6 has it; IPv4 ones are IPv4-mapped, so one comparison serves both.
using IpAddress = std::array<std::uint8_t, 16>;

// "192.0.2.7", "2001:db8::7", "fe80::1%eth0" (the zone is left out), "::ffff:192.0.2.7".
std::optional<IpAddress> ParseIpAddress(std::string_view text);

class PeerRanges {
 public:
  // Loopback, link-local and private ranges.
  static PeerRanges Default();
  // A comma-separated list; what is not an address or range goes to `badEntries`. Without any entry: the
  // default.
  static PeerRanges Parse(std::string_view list, std::vector<std::string>& badEntries);

  bool Contains(std::string_view address) const;

 private:
  struct Range {
    IpAddress start{};
    int bits = 0;  // how many of them are fixed
    bool Holds(const IpAddress& address) const;
  };
  static std::optional<Range> ParseRange(std::string_view text);

  std::vector<Range> ranges_;
};

}  // namespace zeb
