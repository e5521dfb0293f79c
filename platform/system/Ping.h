// Ping: one ICMP echo request, as the field's tools send to see whether a computer is there at all.
#pragma once

#include <chrono>
#include <string>

namespace zeb {

// True when a reply came within the limit; false when none did, the name does not resolve, or the system does
// not let this program send such requests. Blocks; IPv4 only.
bool PingHost(const std::string& host, std::chrono::milliseconds limit = std::chrono::seconds(5));

}  // namespace zeb
