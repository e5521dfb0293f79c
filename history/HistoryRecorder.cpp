#include "history/HistoryRecorder.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "history/HistoryQueue.h"
#include "history/HistoryRecord.h"
#include "platform/EventLoop.h"
#include "platform/Operator.h"
#include "platform/SettingsHive.h"
#include "platform/WorkLane.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr SettingRow<HistoryLimits> kSettings[] = {
    {.name = "HistoryDays",
     .member = &HistoryLimits::days,
     .storedAs = StoredAs::kNumber,
     .least = 0,
     .most = 3650},
    {.name = "HistoryMegabytes",
     .member = &HistoryLimits::megabytes,
     .storedAs = StoredAs::kNumber,
     .least = 0,
     .most = 100000},
};
constexpr std::size_t kMostSourceBytes = 200, kMostPartBytes = 1024, kMostProblemBytes = 1024;
constexpr std::size_t kMostRemembered = 10000;  // outputs' parts, and snapshots
constexpr int kUpdateNumbersPerMillisecond = 1 << 20;

bool SameItem(const clsZEBItemInfo& a, const clsZEBItemInfo& b) {
  return &a.Fields() == &b.Fields();  // the same record: an item that changes becomes another one
}

bool SameItems(const std::vector<clsZEBItemInfo>& a, const std::vector<clsZEBItemInfo>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), SameItem);
}

bool SameButMoment(const ServiceSnapshot& a, const ServiceSnapshot& b) {
  return SameItem(a.currentItem, b.currentItem) && SameItem(a.comingSoonItem, b.comingSoonItem) &&
         a.ServiceName == b.ServiceName && a.NoPictureFileName == b.NoPictureFileName &&
         a.LoggingPath == b.LoggingPath && a.PresenterReference == b.PresenterReference &&
         a.PresenterFullName == b.PresenterFullName && a.ShowReference == b.ShowReference &&
         a.ShowTitle == b.ShowTitle && SameItems(a.nextItems, b.nextItems) &&
         SameItems(a.previousItems, b.previousItems);
}

// Of all that makes a publication another one than the last.
std::size_t ContentHash(const HistoryPublication& row) {
  std::size_t hash = std::hash<std::int64_t>()(row.update) ^ row.bytes;
  for (const std::string* text : {&row.problem, &row.text, &row.digest, &row.templateText, &row.simpleText})
    hash = hash * 1099511628211u + std::hash<std::string>()(*text);
  return hash;
}

std::string EntriesText(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " entry" : " entries");
}

}  // namespace

SettingTable<HistoryLimits> HistorySettingTable() {
  return kSettings;
}

std::optional<HistoryLimits> ReadHistoryLimits(SettingsHive& hive, const std::string& root) {
  HistoryLimits limits;
  ReadSettings(hive, root, "", HistorySettingTable(), limits);
  if (limits.days == 0 || limits.megabytes == 0) return std::nullopt;
  return limits;
}

// ---- What is remembered, and the task that writes

struct HistoryRecorder::State : std::enable_shared_from_this<HistoryRecorder::State> {
  State(Environment& environment, std::shared_ptr<HistoryStore> givenStore,
        std::optional<HistoryLimits> givenLimits)
      : loop(environment.loop),
        person(environment.person),
        store(std::move(givenStore)),
        limits(givenLimits),
        lane(environment.loop),
        nextUpdate(Moment().utc * kUpdateNumbersPerMillisecond) {}

  HistoryMoment Moment() const { return {loop.Now(), loop.UtcOffset()}; }
  bool Keeps() const { return limits && !closed; }
  void Add(HistoryEntry entry);
  bool Repeats(const HistoryPublication& row, const HistoryShown& shown);
  void Forget();
  void Arm();
  void Begin();
  void Work();
  bool WriteSome();
  bool CleanUpSome();
  std::optional<HistoryOutcome> Do(std::function<HistoryOutcome(HistoryStore&)> work);
  bool Judge(const HistoryOutcome& outcome);
  bool SetAside(const std::string& why);
  void WaitForWorker();
  void Fail(const std::string& reason);
  void NoteGivenUp();
  void StartCleanUps();
  void Note(const std::string& line) const { person.Note("History: " + line); }

  EventLoop& loop;
  Operator& person;
  const std::shared_ptr<HistoryStore> store;
  std::optional<HistoryLimits> limits;
  WorkLane lane;
  HistoryQueue queue{kMostWaiting, kMostWaitingBytes};
  std::int64_t nextUpdate;

  Timer batchDue, retry, firstCleanUp, cleanUps;
  bool writing = false, cleanUpDue = false, closed = false;
  bool setAside = false;  // and nothing written since
  std::string failing;    // what was said about it; "": nothing fails
  std::size_t givenUp = 0;
  std::optional<MonotonicTime> givenUpNoted;
  // The batch under way, and what has become of it. Kept beyond the limit: the worker may come back.
  std::shared_ptr<std::vector<HistoryEntry>> underWay = std::make_shared<std::vector<HistoryEntry>>();
  std::shared_ptr<std::optional<HistoryOutcome>> result;

  // What was told last, so that what repeats is kept once.
  struct Update {
    SnapshotPtr snapshot;
    std::int64_t id = 0;
  };
  std::map<int, Update> lastUpdates;  // by service
  struct Known {
    std::weak_ptr<const ServiceSnapshot> snapshot;
    std::int64_t id = 0;
  };
  std::unordered_map<const ServiceSnapshot*, Known> updates;
  std::map<std::tuple<int, OutputType, int, std::string>, std::size_t> lastShown;
};

void HistoryRecorder::State::Add(HistoryEntry entry) {
  if (queue.Add(std::move(entry))) Forget();
  Arm();
}

// What was given up cannot be referred to.
void HistoryRecorder::State::Forget() {
  lastUpdates.clear();
  updates.clear();
  lastShown.clear();
}

bool HistoryRecorder::State::Repeats(const HistoryPublication& row, const HistoryShown& shown) {
  const std::size_t content = ContentHash(row);
  if (lastShown.size() >= kMostRemembered) lastShown.clear();
  const auto [last, isNew] =
      lastShown.try_emplace({row.service, shown.type, shown.number, shown.part}, content);
  if (!isNew && last->second == content) return true;
  last->second = content;
  return false;
}

void HistoryRecorder::State::Arm() {
  if (writing || retry.Running()) return;
  if (queue.Size() >= kBatch)
    Begin();
  else if (!batchDue.Running())
    batchDue = loop.After(kBatchAfter, [this] { Begin(); });
}

void HistoryRecorder::State::Begin() {
  batchDue.Stop();
  retry.Stop();
  if (writing || lane.Hangs()) return;
  writing = true;
  loop.Start("history", [self = shared_from_this()] {
    self->Work();
    self->writing = false;
  });
}

void HistoryRecorder::State::Work() {
  while (!queue.Empty() || (cleanUpDue && limits)) {
    if (!queue.Empty() && !WriteSome()) return;
    if (cleanUpDue && limits && !CleanUpSome()) return;
  }
}

std::optional<HistoryOutcome> HistoryRecorder::State::Do(std::function<HistoryOutcome(HistoryStore&)> work) {
  const auto mine = std::make_shared<std::optional<HistoryOutcome>>();
  result = mine;
  const bool inTime = lane.Run(
      [owned = store, work = std::move(work), mine] {
        try {
          *mine = work(*owned);
        } catch (const std::exception& error) {
          *mine = HistoryOutcome{HistoryOutcome::Trouble::kMayPass, error.what()};
        }
      },
      kWriteLimit);
  if (!inTime && lane.Hangs()) return std::nullopt;
  return mine->value_or(HistoryOutcome{HistoryOutcome::Trouble::kMayPass, "no worker was free"});
}

bool HistoryRecorder::State::WriteSome() {
  // The worker's own until it comes back.
  underWay = std::make_shared<std::vector<HistoryEntry>>(queue.Take(kBatch, kBatchBytes));
  const auto outcome = Do([entries = underWay, bounds = limits.value_or(HistoryLimits())](HistoryStore& to) {
    return to.Write(ToBatch(*entries), bounds);
  });
  if (!outcome) {
    WaitForWorker();
    return false;
  }
  if (!outcome->Ok() && queue.PutBack(std::move(*underWay))) Forget();
  underWay->clear();
  return Judge(*outcome);
}

bool HistoryRecorder::State::CleanUpSome() {
  const auto outcome =
      Do([bounds = *limits, now = Moment().utc](HistoryStore& from) { return from.CleanUp(bounds, now); });
  if (!outcome) {
    WaitForWorker();
    return false;
  }
  cleanUpDue = outcome->Ok() && outcome->more && !closed;
  if (!Judge(*outcome)) return false;
  if (cleanUpDue) loop.Wait(kPieceEvery);
  return true;
}

// False: nothing more can be done now.
bool HistoryRecorder::State::Judge(const HistoryOutcome& outcome) {
  if (outcome.Ok()) {
    setAside = false;
    if (!failing.empty()) Note("is kept again");
    failing.clear();
    NoteGivenUp();
    return true;
  }
  if (outcome.trouble == HistoryOutcome::Trouble::kDamaged && !std::exchange(setAside, true))
    return SetAside(outcome.reason);
  Fail(outcome.reason);
  return false;
}

bool HistoryRecorder::State::SetAside(const std::string& why) {
  const auto name = std::make_shared<std::string>();
  const auto outcome = Do([name](HistoryStore& damaged) {
    const Result<std::string> aside = damaged.SetAside();
    if (aside) *name = aside.Value();
    return aside ? HistoryOutcome() : HistoryOutcome{HistoryOutcome::Trouble::kMayPass, aside.Reason()};
  });
  if (!outcome) {
    WaitForWorker();
    return false;
  }
  if (!outcome->Ok()) {
    Fail(outcome->reason);
    return false;
  }
  Note(why + "; it is set aside as '" + *name + "' and a new one begun");
  Forget();  // the new one knows nothing
  return true;
}

// The worker is left to itself; what is told meanwhile waits.
void HistoryRecorder::State::WaitForWorker() {
  const std::string reason = "the disk of the history file does not answer";
  if (failing != reason) Note(reason);
  failing = reason;
  lane.WhenBack([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self) return;
    const bool written = self->result && *self->result && (*self->result)->Ok();
    if (!written && self->queue.PutBack(std::move(*self->underWay))) self->Forget();
    self->underWay->clear();
    self->writing = false;
    self->Begin();
  });
}

void HistoryRecorder::State::Fail(const std::string& reason) {
  if (reason != failing)
    Note(reason + "; publishing goes on, and it is tried again every " +
         std::to_string(std::chrono::duration_cast<std::chrono::seconds>(kRetryAfter).count()) + " s");
  failing = reason;
  if (!closed) retry = loop.After(kRetryAfter, [this] { Begin(); });
}

void HistoryRecorder::State::NoteGivenUp() {
  givenUp += queue.TakeGivenUp();
  const MonotonicTime now = loop.Monotonic();
  if (givenUp == 0 || (givenUpNoted && now - *givenUpNoted < std::chrono::minutes(1))) return;
  Note(EntriesText(givenUp) + " were given up, since they could not be written in time");
  givenUp = 0;
  givenUpNoted = now;
}

void HistoryRecorder::State::StartCleanUps() {
  const auto begin = [this] {
    cleanUpDue = true;
    if (!retry.Running()) Begin();
  };
  firstCleanUp = loop.After(kCleanUpAfter, begin);
  cleanUps = loop.Every(kCleanUpEvery, begin);
}

// ---- The recorder

HistoryRecorder::HistoryRecorder(Environment& environment, std::shared_ptr<HistoryStore> store,
                                 std::optional<HistoryLimits> limits)
    : state_(std::make_shared<State>(environment, std::move(store), limits)) {
  state_->StartCleanUps();
}

HistoryRecorder::~HistoryRecorder() {
  state_->closed = true;
  state_->batchDue.Stop();
  state_->retry.Stop();
  state_->firstCleanUp.Stop();
  state_->cleanUps.Stop();
}

void HistoryRecorder::SetLimits(std::optional<HistoryLimits> limits) {
  State& state = *state_;
  if (state.limits == limits) return;
  state.limits = limits;
  if (!limits) {
    state.queue.Clear();
    state.Forget();
  } else {
    state.StartCleanUps();
  }
}

bool HistoryRecorder::Keeps() const {
  return state_->Keeps();
}

void HistoryRecorder::ItemSet(int service, std::string_view serviceName, int slot, std::string_view source,
                              const clsZEBItemInfo& item) {
  if (!state_->Keeps()) return;
  HistoryItemEntry entry;
  entry.row.moment = state_->Moment();
  entry.row.service = service;
  entry.row.slot = slot;
  entry.row.serviceName = HistoryText(serviceName, kMostSourceBytes);
  entry.row.source = HistoryText(source, kMostSourceBytes);
  entry.item = item;
  state_->Add(std::move(entry));
}

std::int64_t HistoryRecorder::Updating(const SnapshotPtr& snapshot, UpdateCause cause) {
  State& state = *state_;
  if (!state.Keeps() || !snapshot) return 0;
  const auto known = state.updates.find(snapshot.get());
  if (known != state.updates.end() && known->second.snapshot.lock() == snapshot) return known->second.id;
  if (state.updates.size() >= kMostRemembered) state.updates.clear();

  State::Update& last = state.lastUpdates[snapshot->serviceNumber];
  const bool same = last.snapshot && SameButMoment(*last.snapshot, *snapshot);
  const std::int64_t id = same ? last.id : state.nextUpdate++;
  last = {snapshot, id};
  state.updates.insert_or_assign(snapshot.get(), State::Known{snapshot, id});
  if (!same) state.Add(HistoryUpdateEntry{id, {snapshot->moment, state.loop.UtcOffset()}, cause, snapshot});
  return id;
}

void HistoryRecorder::Shown(const HistoryShown& shown) {
  State& state = *state_;
  if (!state.Keeps() || !shown.snapshot) return;
  HistoryPublication row;
  row.update = Updating(shown.snapshot, shown.cause);
  row.updateMoment = {shown.snapshot->moment, state.loop.UtcOffset()};
  row.moment = state.Moment();
  row.service = shown.snapshot->serviceNumber;
  row.output = std::string(NameOf(shown.type)) + std::to_string(shown.number);
  row.part = HistoryText(shown.part, kMostPartBytes);
  row.problem = HistoryText(OneLine(shown.problem, kMostProblemBytes), kMostProblemBytes);
  row.text = HistoryText(shown.page ? FirstLines(shown.page->beginning) : shown.text, kMostTextBytes);
  row.bytes = shown.page ? shown.page->bytes : shown.text.size();
  if (shown.page) row.digest = shown.page->digest.Text();
  if (shown.latency) row.latency = std::chrono::duration_cast<std::chrono::microseconds>(*shown.latency);
  // Half a template would give something else.
  const auto& source = shown.source;
  if (source.templateText && source.templateText->size() <= kMostTemplateBytes)
    row.templateText = *source.templateText;
  if (source.simpleText.size() <= kMostTextBytes) row.simpleText = source.simpleText;
  row.encoding = EncodingNumber(source.escape, source.urlEncode);
  if (!state.Repeats(row, shown)) state.Add(std::move(row));
}

void HistoryRecorder::Close() {
  State& state = *state_;
  if (state.closed) return;
  state.closed = true;
  state.firstCleanUp.Stop();
  state.cleanUps.Stop();
  state.cleanUpDue = false;
  if (!state.queue.Empty()) state.Begin();
  if (state.loop.InTask()) {
    state.loop.WaitUntil([&state] { return !state.writing || state.lane.Hangs(); }, kCloseLimit);
    if (!state.writing && !state.lane.Hangs())
      state.lane.Run([store = state.store] { store->Close(); }, kCloseLimit);
  }
  const std::size_t left = state.queue.Size() + state.underWay->size();
  if (left > 0) state.Note("at the end " + EntriesText(left) + " could not be written");
  state.queue.Clear();
}

std::size_t HistoryRecorder::Waiting() const {
  return state_->queue.Size() + state_->underWay->size();
}

}  // namespace zeb
