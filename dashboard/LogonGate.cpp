#include "dashboard/LogonGate.h"

#include <algorithm>

namespace zeb {

// What is no address, such as the local socket's name, shares one place.
IpAddress LogonGate::KeyOf(const std::string& peer) {
  IpAddress key = ParseIpAddress(peer).value_or(IpAddress{});
  const bool mapped = peer.find(':') == std::string::npos;
  if (!mapped) std::fill(key.begin() + 8, key.end(), std::uint8_t{0});
  return key;
}

void LogonGate::MakeRoom(MonotonicTime now) {
  std::erase_if(
      peers_, [&](const auto& pair) { return !pair.second.trying && now - pair.second.last >= kRemembered; });
  while (peers_.size() >= kMost) {
    // Those that try at this moment are as few as the connections.
    auto oldest = peers_.end();
    for (auto peer = peers_.begin(); peer != peers_.end(); ++peer)
      if (!peer->second.trying && (oldest == peers_.end() || peer->second.last < oldest->second.last))
        oldest = peer;
    if (oldest == peers_.end()) return;
    peers_.erase(oldest);
  }
}

Duration LogonGate::Begin(const std::string& peer, MonotonicTime now) {
  const IpAddress key = KeyOf(peer);
  auto found = peers_.find(key);
  if (found != peers_.end() && !found->second.trying && now - found->second.last >= kRemembered) {
    peers_.erase(found);
    found = peers_.end();
  }
  if (found == peers_.end()) {
    MakeRoom(now);
    found = peers_.emplace(key, Peer{}).first;
    found->second.last = now;
  }
  Peer& state = found->second;
  if (state.trying) return std::chrono::seconds(1);
  if (now < state.next) return state.next - now;
  state.trying = true;
  return Duration::zero();
}

void LogonGate::Ended(const std::string& peer, How how, MonotonicTime now) {
  const auto found = peers_.find(KeyOf(peer));
  if (found == peers_.end()) return;
  Peer& state = found->second;
  state.trying = false;
  if (how == How::kRight || (how == How::kNotTried && state.wrong == 0)) {
    peers_.erase(found);
    return;
  }
  if (how == How::kNotTried) return;
  state.last = now;
  state.next = now + std::min<Duration>(std::chrono::seconds(1) * (1 << std::min(state.wrong, 10)), kLongest);
  ++state.wrong;
}

}  // namespace zeb
