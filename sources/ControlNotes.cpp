#include "sources/ControlNotes.h"

#include <chrono>
#include <utility>

namespace zeb {

namespace {
constexpr Duration kQuiet = std::chrono::minutes(1);
}

void ControlNotes::Took(const std::string& name, const std::string& address, const std::string& how) {
  Peer& peer = PeerOf(name, address);
  peer.has = true;
  Tell(peer, peer.took, peer.name + " (" + address + ")" + how);
}

void ControlNotes::Ended(const std::string& name, const std::string& address) {
  Peer& peer = PeerOf(name, address);
  peer.has = false;
  Tell(peer, peer.ended, peer.name + " no longer has control");
}

// Peers choose their names, so there is a bound: beyond it they share what is left out.
ControlNotes::Peer& ControlNotes::PeerOf(const std::string& name, const std::string& address) {
  const MonotonicTime now = loop_.Monotonic();
  std::string key = name + '\n' + address;
  if (peers_.size() >= kMostPeers && peers_.count(key) == 0) {
    std::erase_if(peers_, [now](const auto& entry) {
      const Peer& peer = entry.second;
      return now - peer.changed >= kQuiet && !peer.later.Running();
    });
    if (peers_.size() >= kMostPeers) key.clear();
  }
  Peer& peer = peers_[key];
  peer.name = "'" + name + "'";
  peer.changed = now;
  return peer;
}

void ControlNotes::Tell(Peer& peer, RepeatedNote& kind, const std::string& line) {
  if (const auto more = kind.Next(loop_.Monotonic())) {
    peer.toldHas = peer.has;
    write_(line + *more);
  } else if (!peer.later.Running()) {
    peer.later = loop_.After(kQuiet, [this, &peer] { TellState(peer); });
  }
}

void ControlNotes::TellState(Peer& peer) {
  if (peer.has == peer.toldHas) return;
  peer.toldHas = peer.has;
  write_(peer.name + (peer.has ? " has control, after having come and gone"
                               : " no longer has control, after having come and gone"));
}

}  // namespace zeb
