// StationEvents: what happens at the stations, as server-sent events whose data is JSON:
//
//   services   {"version","time","services":[...]}: the list of stations is this one now
//   service    one station, as GET /api/v1/services/N gives it, when it is another
//   note       {"time","text"}: a line of the journal
//   alive      {"time"}: every 10 s, so that silence means a dead connection
//
// A reader first gets `services`, with as many stations as fit into 256 KiB; the others follow as `service`,
// as fast as it reads. Changes are told 20 ms later, so that what changes together is told together. While
// nobody reads none of this costs anything.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "dashboard/EventHub.h"
#include "dashboard/JournalTail.h"
#include "dashboard/Stations.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"

namespace zeb {

class StationEvents {
 public:
  // All outlive this object, which sets their callbacks.
  StationEvents(EventLoop& loop, Stations& stations, JournalTail& journal);
  ~StationEvents();
  StationEvents(const StationEvents&) = delete;
  StationEvents& operator=(const StationEvents&) = delete;

  EventHub& Hub() { return hub_; }

 private:
  void Greet(const std::shared_ptr<EventStream>& reader);
  void SendRest(const std::shared_ptr<EventStream>& reader, int from, const Epoch::Mark& mark);
  void Changed(int number);
  void TellChanges();
  void TellService(int number);
  std::string ListText(int& sent);

  EventLoop& loop_;
  Stations& stations_;
  JournalTail& journal_;
  EventHub hub_;
  std::set<int> changed_;
  std::map<int, std::size_t> told_;  // of each station, a hash of what was published last
  Timer soon_, alive_;
  bool telling_ = false;
  Epoch epoch_;
};

}  // namespace zeb
