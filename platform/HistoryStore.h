// HistoryStore, HistoryReader: where is kept what was on air and what each output showed.
//
// The store is written by one HistoryRecorder, on a worker; it is read by as many as like, each with a reader
// of its own, also by other programs and while it is written. Both block; a reader is used on one thread at a
// time.
//
// Records and words are bytes whose form only the room history/ knows; equal ones are kept once.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Result.h"
#include "platform/Time.h"

namespace zeb {

// A moment that stays the same when the clocks change: UTC, and what the station's clocks said.
struct HistoryMoment {
  std::int64_t utc = 0;           // milliseconds since 1970
  std::chrono::seconds offset{};  // that local time was ahead

  HistoryMoment() = default;
  HistoryMoment(std::int64_t givenUtc, std::chrono::seconds givenOffset)
      : utc(givenUtc), offset(givenOffset) {}
  HistoryMoment(WallTime local, std::chrono::seconds givenOffset)
      : utc((local.time_since_epoch() - givenOffset).count()), offset(givenOffset) {}
  WallTime Local() const { return WallTime(std::chrono::milliseconds(utc) + offset); }
  bool operator==(const HistoryMoment&) const = default;
};

inline constexpr int kHistoryCurrent = 0;  // slots; next n is n,
inline constexpr int kHistoryComingSoon = 1000;
inline constexpr int kHistoryPrevious = -1;  // previous n is -n

// An item came into a slot.
struct HistoryItem {
  std::int64_t id = 0;  // given by the store, as in the others but updates
  HistoryMoment moment;
  int service = 0;
  int slot = kHistoryCurrent;
  std::string serviceName, source, record;
};

// What was known when an update began: enough to expand any template as it was expanded then.
struct HistoryUpdate {
  struct Slot {
    int slot = kHistoryCurrent;
    std::string record;
  };
  std::int64_t id = 0;  // given by who writes
  HistoryMoment moment;
  int service = 0;
  int cause = 0;
  std::string words;        // presenter, show and the like
  std::vector<Slot> items;  // those that hold something
};

// An output has published something, or failed to.
struct HistoryPublication {
  std::int64_t id = 0;
  HistoryMoment moment;
  int service = 0;
  std::string output, part;  // "File2", and the destination of the pair; "" where there is one thing
  std::string problem;       // "": it was published
  std::string text;          // what is shown; of a page the first lines
  std::string digest;        // of a page; "" of a text
  std::uint64_t bytes = 0;
  std::optional<std::chrono::microseconds> latency;  // from the information to here
  std::string templateText, simpleText;
  int encoding = 0;            // of the values in it
  std::int64_t update = 0;     // what it shows; 0: unknown
  HistoryMoment updateMoment;  // that its dates are those of
};

struct HistoryBatch {
  std::vector<HistoryItem> items;
  std::vector<HistoryUpdate> updates;
  std::vector<HistoryPublication> publications;
};

// What the store may hold.
struct HistoryLimits {
  int days = 30;
  int megabytes = 200;  // of all its files
  bool operator==(const HistoryLimits&) const = default;
};

// How an operation on the store went. What may pass is worth trying again.
struct HistoryOutcome {
  enum class Trouble { kNone, kMayPass, kDamaged } trouble = Trouble::kNone;
  std::string reason;  // one line that names the store
  bool more = false;   // of a clean-up: there is more to do

  bool Ok() const { return trouble == Trouble::kNone; }
};

class HistoryStore {
 public:
  virtual ~HistoryStore() = default;
  // All of it is stored, or nothing. Makes room by giving up the oldest when the limit is reached.
  virtual HistoryOutcome Write(const HistoryBatch& batch, const HistoryLimits& limits) = 0;
  // Gives up a small piece of what is too old or too much.
  virtual HistoryOutcome CleanUp(const HistoryLimits& limits, std::int64_t nowUtc) = 0;
  // Puts a damaged store out of the way; the next Write begins a new one. Gives the name it has now.
  virtual Result<std::string> SetAside() = 0;
  // Lets go of what it holds open; the next call opens it again.
  virtual void Close() = 0;
};

// What is asked for; [from, to) in UTC milliseconds.
struct HistoryFilter {
  int service = 0;  // 0: all
  std::int64_t from = std::numeric_limits<std::int64_t>::min();
  std::int64_t to = std::numeric_limits<std::int64_t>::max();
  std::optional<int> slot;  // of items
  std::string output;       // of publications; "": all
};

// Behind which row to go on: its moment and its id.
struct HistoryPlace {
  std::int64_t utc = std::numeric_limits<std::int64_t>::min();
  std::int64_t id = std::numeric_limits<std::int64_t>::min();
};

enum class HistoryResult { kAny, kPublished, kFailed };

class HistoryReader {
 public:
  virtual ~HistoryReader() = default;
  // Rows in the order of time, at most `most`, behind `place`. Each call sees the store as it is then.
  virtual Result<std::vector<HistoryItem>> Items(const HistoryFilter& filter, HistoryPlace place,
                                                 int most) = 0;
  virtual Result<std::vector<HistoryPublication>> Publications(const HistoryFilter& filter,
                                                               HistoryPlace place, int most) = 0;
  // The words and records of an update are asked for by number (Bytes): most are those of the one before.
  struct Update {
    std::int64_t id = 0;
    HistoryMoment moment;
    int service = 0;
    int cause = 0;
    std::int64_t words = 0;
    std::vector<std::pair<int, std::int64_t>> items;
  };
  virtual Result<std::vector<Update>> Updates(const HistoryFilter& filter, HistoryPlace place, int most) = 0;
  virtual Result<std::optional<Update>> FindUpdate(std::int64_t id) = 0;
  virtual Result<std::string> Bytes(std::int64_t number) = 0;

  // The names of the outputs of a service, and of the parts of one.
  virtual Result<std::vector<std::string>> Outputs(int service) = 0;
  virtual Result<std::vector<std::string>> Parts(int service, const std::string& output) = 0;
  // The last of an output's part up to a moment (inclusive).
  virtual Result<std::optional<HistoryPublication>> LastPublication(int service, const std::string& output,
                                                                    const std::string& part, std::int64_t utc,
                                                                    HistoryResult result) = 0;
  // The last item in the slot up to a moment (inclusive).
  virtual Result<std::optional<HistoryItem>> LastItem(int service, int slot, std::int64_t utc) = 0;
};

}  // namespace zeb
