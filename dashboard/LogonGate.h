// LogonGate: slows down who tries passwords: after each wrong one from an address the next try waits longer,
// 1, 2, 4 ... 60 s, and tries of one address never run side by side. An IPv6 network (/64) is one address.
//
// Remembers 1000 addresses, each for 15 minutes after its last wrong password; the oldest make room.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "platform/Time.h"
#include "sources/PeerRanges.h"

namespace zeb {

class LogonGate {
 public:
  static constexpr std::size_t kMost = 1000;
  static constexpr Duration kLongest = std::chrono::seconds(60);
  static constexpr Duration kRemembered = std::chrono::minutes(15);

  // Zero: the try may be made now, and Ended must follow. Else how long to wait first.
  Duration Begin(const std::string& peer, MonotonicTime now);
  enum class How { kRight, kWrong, kNotTried };
  void Ended(const std::string& peer, How how, MonotonicTime now);
  std::size_t Count() const { return peers_.size(); }

 private:
  struct Peer {
    int wrong = 0;
    bool trying = false;
    MonotonicTime last{};  // wrong password, or begin of the first try
    MonotonicTime next{};
  };
  static IpAddress KeyOf(const std::string& peer);
  void MakeRoom(MonotonicTime now);

  std::map<IpAddress, Peer> peers_;
};

}  // namespace zeb
