// One service: how long an item takes until its pages are in place, and what that costs.
#include "bench/system/Row.h"

namespace zeb::bench {
namespace {

constexpr int kWarmUp = 100;
constexpr int kRounds = 10;
constexpr int kItems = 100;  // a round

void WarmUp(Rivals& rivals) {
  for (int i = 0; i < kWarmUp; ++i)
    for (Publisher* publisher : {&rivals.zeb, &rivals.bare}) {
      LineToFiles(*publisher);
      LetRest(*publisher);
    }
}

// Half of the items within, 99 of 100 within; then an item's processor time, switches and hand-overs.
Numbers ARound(Publisher& publisher) {
  std::vector<double> times;
  const Usage before = publisher.Program().Used();
  for (int i = 0; i < kItems; ++i) {
    times.push_back(LineToFiles(publisher));
    LetRest(publisher);
  }
  const Usage used = (publisher.Program().Used() - before).For(kItems);
  return {Median(times), Quantile(times, 0.99), used.seconds, used.switches, used.handOvers};
}

void LineToFile(benchmark::State& state, Medium medium, int pairs) {
  Row(state, [&] {
    Rivals rivals({medium, 1, pairs});
    WarmUp(rivals);
    const std::vector<Compared> compared = InTurns(rivals, kRounds, ARound);
    Count(state, "p50_us", compared[0], kMicro);
    Count(state, "p99_us", compared[1], kMicro);
    Count(state, "cpu_us", compared[2], kMicro);
    Count(state, "switches", compared[3]);
    Count(state, "handovers", compared[4]);
    return compared[0].zeb;
  });
}
BENCHMARK_CAPTURE(LineToFile, disk, Medium::kDisk, 1)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(LineToFile, memory, Medium::kMemory, 1)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(LineToFile, disk_20_pairs, Medium::kDisk, 20)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(LineToFile, memory_20_pairs, Medium::kMemory, 20)->UseManualTime()->Iterations(1);

void SystemCalls(benchmark::State& state, bool ofZeb) {
  Row(state, [&] {
    Publisher publisher(ofZeb ? Publisher::Kind::kZeb : Publisher::Kind::kBare, {});
    for (int i = 0; i < kWarmUp; ++i) LineToFiles(publisher);
    const Calls calls = CountCalls(publisher, kItems);
    state.counters["calls"] = calls.all;
    state.SetLabel(calls.byName);
    return LineToFiles(publisher);
  });
}
BENCHMARK_CAPTURE(SystemCalls, zeb, true)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(SystemCalls, bare, false)->UseManualTime()->Iterations(1);

// Items that do not wait for one another. The slowest of all rounds matters: it says what an item waits for
// that arrives during an update. Two at once: the second comes in the middle of the first one's update.
void ItemsInARow(benchmark::State& state, Medium medium, double gap, bool twoAtOnce) {
  constexpr double kBetweenTwo = 0.0001;
  constexpr int kTurns = 4;
  constexpr double kTurnSeconds = 1.5;
  std::vector<double> gaps(static_cast<std::size_t>(kTurnSeconds / gap), gap);
  for (std::size_t i = 0; twoAtOnce && i < gaps.size(); i += 2) gaps[i] = kBetweenTwo;
  Row(state, [&] {
    Rivals rivals({medium, 1, 1});
    WarmUp(rivals);
    std::vector<double> ofZeb, ofBare;
    InTurns(rivals, kTurns, [&](Publisher& publisher) {
      const std::vector<double> times = SendInARow(publisher, gaps);
      std::vector<double>& all = publisher.IsZeb() ? ofZeb : ofBare;
      all.insert(all.end(), times.begin(), times.end());
      LetRest(publisher, 0.01);
      return Numbers{};
    });
    for (const auto& [name, times] : {std::pair("zeb", &ofZeb), {"bare", &ofBare}}) {
      const double half = Median(*times), slowest = Quantile(*times, 1);
      state.counters[std::string(name) + "_p50_us"] = half * kMicro;
      state.counters[std::string(name) + "_max_us"] = slowest * kMicro;
      state.counters[std::string(name) + "_max_to_p50"] = slowest / half;
    }
    state.counters["items"] = static_cast<double>(ofZeb.size());
    return Median(ofZeb);
  });
}
#define ITEMS_IN_A_ROW(name, ...) \
  BENCHMARK_CAPTURE(ItemsInARow, name, __VA_ARGS__)->UseManualTime()->Iterations(1)
ITEMS_IN_A_ROW(disk_5_ms, Medium::kDisk, 0.005, false);
ITEMS_IN_A_ROW(disk_20_ms, Medium::kDisk, 0.020, false);
ITEMS_IN_A_ROW(memory_5_ms, Medium::kMemory, 0.005, false);
ITEMS_IN_A_ROW(memory_20_ms, Medium::kMemory, 0.020, false);
ITEMS_IN_A_ROW(memory_two_at_once, Medium::kMemory, 0.005, true);

}  // namespace
}  // namespace zeb::bench
