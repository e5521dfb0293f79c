// Alarms: tells somebody when an output fails, or shows an old item, for longer than it should: once when
// that begins and once when it ends, by a program that is run and by a message that is posted.
//
// One for the program, owned by the service list, which has it look at all services each second. Settings are
// at the settings root: AlarmAfterSeconds, AlarmCommand, AlarmURL. Telling never holds anything up: it is
// done one alarm after the other, in a task, and each way has its time.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "core/SettingFields.h"
#include "platform/Environment.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"
#include "platform/Processes.h"
#include "platform/WorkLane.h"
#include "status/StationState.h"

namespace zeb {

struct AlarmSettings {
  std::int32_t AlarmAfterSeconds = 30;
  std::string AlarmCommand, AlarmURL;
};
SettingTable<AlarmSettings> AlarmSettingTable();

class Alarms {
 public:
  // Each way's time: then the program is killed, and the server not waited for.
  static constexpr Duration kCommandLimit = std::chrono::seconds(30);
  static constexpr Duration kPostLimit = std::chrono::seconds(10);
  static constexpr std::size_t kMostWaiting = 1000;

  explicit Alarms(Environment& environment)
      : environment_(environment), lane_(std::make_shared<WorkLane>(environment.loop)) {}

  // Reads the settings; what was begun goes on and ends as it would have.
  void ReadSettings();
  bool Wanted() const { return !settings_.AlarmCommand.empty() || !settings_.AlarmURL.empty(); }
  // All that is wrong at this moment.
  void Look(const std::vector<Trouble>& troubles);

 private:
  // What is wrong with one output.
  struct Known {
    Trouble trouble;
    MonotonicTime since{};
    WallTime sinceMoment{};
    bool told = false;
  };
  struct Alarm {
    bool begins = false;
    Trouble trouble;
    WallTime since{};
  };
  // Service, output, and which of those that have both names: two services may have one name.
  using Key = std::tuple<std::string, std::string, int>;

  void Tell(bool begins, const Known& known);
  void Deliver();
  void Run(const Alarm& alarm);
  void Post(const Alarm& alarm);
  void Note(const std::string& way, const Outcome& outcome);

  Environment& environment_;
  AlarmSettings settings_;
  std::map<Key, Known> known_;
  std::deque<Alarm> waiting_;
  bool delivering_ = false;
  std::map<std::string, std::string> noted_;  // the last failure of each way
  std::shared_ptr<WorkLane> lane_;            // shared with the task that waits in it
  Epoch epoch_;
};

}  // namespace zeb
