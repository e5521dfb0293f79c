// How many descriptors (connections, files) this process may have open at a time, and what is left for
// others. posix/ and windows/ each have an implementation.
#pragma once

#include <cstdint>

namespace zeb {

// A socket's number in the system, and what stands for none.
using SocketNumber = std::intptr_t;
inline constexpr SocketNumber kNoSocket = -1;

// A socket for a connection that stays open, made so that it leaves the half of the reserve that is for files
// alone: descriptors are given from the lowest on. kNoSocket when it fails; `noneLeft` tells whether for want
// of descriptors.
SocketNumber OpenSocketWithinLimit(int family, int type, int protocol, bool& noneLeft);

// Both ends of its connection hear that it is over; whoever waits for it goes on.
void EndConnection(SocketNumber number);

}  // namespace zeb
