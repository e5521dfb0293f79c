// What is to be seen of a running service at one moment: plain values that every front end reads (the window,
// the web page, zebctl, the metrics) and that nobody else works with. Texts are as the operator knows them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/OutputTypes.h"
#include "core/Shown.h"
#include "core/clsZEBItemInfo.h"
#include "platform/Time.h"
#include "status/LatencyHistogram.h"

namespace zeb {

// How an output stands, for those who look at it from across the room. In the order of concern.
enum class Severity { kOk, kBusy, kOff, kFailing };
// "ok", "busy", "off", "failing": the words of the interfaces.
std::string_view WordOf(Severity severity);

struct OutputState {
  OutputType type = OutputType::kFile;
  int number = 0;      // within its type, from 1
  std::string info;    // what it is, in its own words
  std::string status;  // one word or two
  std::uint32_t colour = 0;
  Severity severity = Severity::kOff;
  std::string problem;          // one line; "" while nothing fails
  std::optional<int> progress;  // percent of what is being sent, while something is
  Shown shown;                  // what it published last
  std::optional<WallTime> published;
  std::optional<Duration> latency;  // from the information's arrival to that publication
  LatencyHistogram latencies;       // of all of them, since the service was opened
  int waiting = 0;                  // snapshots and cues that it has not come to yet
  // From the information's arrival to the moment at which the public was seen to have it, where that is
  // looked at.
  std::optional<Duration> onAir;
  // It does not show what is on: it fails, hangs or is still at something older. Never for one that shows
  // everything later because it is set to.
  bool stale = false;
  std::optional<WallTime> staleSince, failingSince;
  std::uint64_t publications = 0, failures = 0;  // runs, since the service was opened

  std::string Name() const { return std::string(NameOf(type)) + std::to_string(number); }  // "File1"
};

// Where a service's information comes from.
struct SourceState {
  enum class Kind { kControlLink, kFile, kNone };
  Kind kind = Kind::kNone;
  bool healthy = false;    // it is open, and something is to be expected from it
  std::string text;        // "port 6901", "'/playout/now.txt'", or what is wrong
  std::string controller;  // who has control; "" when nobody has
  int connections = 0;     // to the control link
};

// One output that fails, or does not show the present item.
struct Trouble {
  std::string service, output;  // "Demo FM", "File1"
  std::string problem;
};

struct StationState {
  int number = 0;
  std::string name;
  SourceState source;
  std::string information, travel, netControl, bounce;  // the panels
  clsZEBItemInfo current, comingSoon;
  std::vector<clsZEBItemInfo> next, previous;  // up to the last slot that holds something
  std::string presenterReference, presenterName, showReference, showTitle;
  std::vector<OutputState> outputs;  // by type as updates run, then by number
  bool updating = false;
  bool elsewhere = false;  // another program publishes it: nothing of what it does is known here

  // The worst of its outputs and its source.
  Severity Worst() const;
};

}  // namespace zeb
