// One service: how long an item takes until its pages are in place, and what that costs.
#include "bench/system/Row.h"

namespace zeb::bench {
namespace {

constexpr int kWarmUp = 50;
constexpr int kRounds = 10;
constexpr double kLate = 5;  // times the median

// Items of a round: fewer when each is many files.
int ItemsOf(const Plan& plan) {
  return Times(plan.pairs == 1 ? 100 : 30, 5);
}

// Half of the items within, 99 of 100 within; then an item's processor time, switches and hand-overs.
Numbers ARound(Publisher& publisher) {
  std::vector<double> times;
  const int items = ItemsOf(publisher.Planned());
  const Usage before = publisher.Program().Used();
  for (int i = 0; i < items; ++i) {
    times.push_back(LineToFiles(publisher));
    LetRest(publisher);
  }
  const Usage used = (publisher.Program().Used() - before).For(items);
  return {Median(times), Quantile(times, 0.99), used.seconds, used.switches, used.handOvers};
}

void LineToFile(benchmark::State& state, Medium medium, int pairs) {
  Row(state, [&] {
    Rivals rivals({medium, 1, pairs});
    WarmUp(rivals, Times(kWarmUp, 5));
    const std::vector<Compared> compared = InTurns(rivals, Times(kRounds, 2), ARound);
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

void SystemCalls(benchmark::State& state) {
  Row(state, [&] {
    Rivals rivals({});
    WarmUp(rivals, Times(kWarmUp, 5));
    const int items = ItemsOf({});
    const Calls ofZeb = CountCalls(rivals.zeb, items), ofBare = CountCalls(rivals.bare, items);
    state.counters["zeb_calls"] = ofZeb.all;
    state.counters["bare_calls"] = ofBare.all;
    state.SetLabel(ofZeb.byName + "; bare: " + ofBare.byName);
    return LineToFiles(rivals.zeb);
  });
}
BENCHMARK(SystemCalls)->UseManualTime()->Iterations(1);

void CountRow(benchmark::State& state, const std::string& name, const std::vector<double>& times) {
  const double half = Median(times), slowest = Quantile(times, 1);
  const auto late = std::count_if(times.begin(), times.end(), [&](double t) { return t > kLate * half; });
  state.counters[name + "_p50_us"] = half * kMicro;
  state.counters[name + "_max_us"] = slowest * kMicro;
  state.counters[name + "_max_to_p50"] = slowest / half;
  state.counters[name + "_late"] = static_cast<double>(late);
}

// Items that do not wait for one another. The slowest of all rounds matters: it says what an item waits for
// that arrives during an update; how many are late tells one that the machine held up from a habit. Two at
// once: the second comes in the middle of the first one's update.
void ItemsInARow(benchmark::State& state, Medium medium, double gap, bool twoAtOnce) {
  constexpr double kBetweenTwo = 0.0001;
  constexpr int kTurns = 4;
  std::vector<double> gaps(static_cast<std::size_t>(Times(1500, 100) / 1000.0 / gap), gap);
  for (std::size_t i = 0; twoAtOnce && i < gaps.size(); i += 2) gaps[i] = kBetweenTwo;
  Row(state, [&] {
    Rivals rivals({medium, 1, 1});
    WarmUp(rivals, Times(kWarmUp, 5));
    std::vector<double> ofZeb, ofBare;
    InTurns(rivals, kTurns, [&](Publisher& publisher) {
      const std::vector<double> times = SendInARow(publisher, gaps);
      std::vector<double>& all = publisher.IsZeb() ? ofZeb : ofBare;
      all.insert(all.end(), times.begin(), times.end());
      LetRest(publisher, 0.01);
      return Numbers{};
    });
    CountRow(state, "zeb", ofZeb);
    CountRow(state, "bare", ofBare);
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
