// ControlNotes: the journal's lines about who takes and loses control of a service. A peer that comes and
// goes all the time gets about a line of each kind a minute; after that minute one more line says how things
// are, when the last one no longer does.
//
// Owned by the control server.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/EventLoop.h"
#include "diagnostics/RepeatedNote.h"

namespace zeb {

class ControlNotes {
 public:
  ControlNotes(EventLoop& loop, std::function<void(const std::string& line)> write)
      : loop_(loop), write_(std::move(write)) {}

  // `how` ends the line: " took control".
  void Took(const std::string& name, const std::string& address, const std::string& how);
  void Ended(const std::string& name, const std::string& address);

 private:
  struct Peer {
    std::string name;  // as lines say it
    RepeatedNote took, ended;
    bool has = false, toldHas = false;
    MonotonicTime changed{};
    Timer later;
  };
  static constexpr std::size_t kMostPeers = 64;
  Peer& PeerOf(const std::string& name, const std::string& address);
  void Tell(Peer& peer, RepeatedNote& kind, const std::string& line);
  void TellState(Peer& peer);

  EventLoop& loop_;
  std::function<void(const std::string&)> write_;
  std::map<std::string, Peer> peers_;
};

}  // namespace zeb
