// Many services: an item for each at once; how long zebd takes to begin with them, what they take while
// nothing happens, and what looking at information files takes.

#include "bench/system/Ports.h"
#include "bench/system/Row.h"
#include "bench/system/Zebd.h"

namespace zeb::bench {
namespace {

double IdleSeconds() {
  return Times(10, 1);
}
int Services(int often) {
  return Times(often, std::min(often, 20));
}

void ItemEach(benchmark::State& state, Medium medium, int services) {
  constexpr int kRounds = 5;
  constexpr int kWarmUp = 1;
  Row(state, [&] {
    Rivals rivals({medium, Services(services), 1});
    WarmUp(rivals, kWarmUp);
    std::size_t threads = 0;
    const std::vector<Compared> compared = InTurns(rivals, Times(kRounds, 2), [&](Publisher& publisher) {
      LetRest(publisher, 0.2);
      const Everywhere result = SendEverywhere(publisher);
      if (publisher.IsZeb()) threads = std::max(threads, result.threads);
      return Numbers{result.all, result.half};
    });
    Count(state, "all_ms", compared[0], kMilli);
    Count(state, "half_ms", compared[1], kMilli);
    state.counters["threads"] = static_cast<double>(threads);
    return compared[0].zeb;
  });
}
BENCHMARK_CAPTURE(ItemEach, disk_100, Medium::kDisk, 100)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(ItemEach, memory_100, Medium::kMemory, 100)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(ItemEach, disk_1000, Medium::kDisk, 1000)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(ItemEach, memory_1000, Medium::kMemory, 1000)->UseManualTime()->Iterations(1);

// Share of one core, in percent, while the driver sleeps.
double CoreShare(Process& process) {
  const Usage before = process.Used();
  const Moment start = Now();
  Sleep(IdleSeconds());
  process.MustRun();
  return 100 * (process.Used() - before).seconds / Seconds(start, Now());
}

void CountIdle(benchmark::State& state, Process& process) {
  Sleep(2);  // what follows the start is over
  process.Listen();
  state.counters["core_percent"] = CoreShare(process);
  state.counters["resident_MB"] = process.ResidentMegabytes();
  state.counters["threads"] = static_cast<double>(process.Threads().size());
}

// The median of some starts, the first of which reads everything from the disk's cache only.
void Start(benchmark::State& state, int services) {
  constexpr int kStarts = 3;
  Row(state, [&] {
    const TemporaryFolder home(Medium::kDisk);
    std::filesystem::create_directories(home.Path() / "www");
    SetUpFilePairs(home.Path(), PortsFor(Services(services)), Services(services), 1);
    std::vector<double> times;
    for (int i = 0; i < kStarts; ++i) {
      StartedZebd zebd = StartZebd(home.Path(), Process::Cores::kAll);
      times.push_back(zebd.seconds);
      if (i + 1 == kStarts) CountIdle(state, *zebd.process);
    }
    state.counters["ready_s"] = Median(times);
    return Median(times);
  });
}
BENCHMARK_CAPTURE(Start, 1, 1)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(Start, 1000, 1000)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(Start, 5000, 5000)->UseManualTime()->Iterations(1);

// Each file in a folder of its own, on a disk, looked at once a second and left as it is.
void PolledFiles(benchmark::State& state, int files) {
  Row(state, [&] {
    const TemporaryFolder home(Medium::kDisk);
    SetUpPolledFiles(home.Path(), Services(files));
    const StartedZebd zebd = StartZebd(home.Path(), Process::Cores::kAll);
    CountIdle(state, *zebd.process);
    return zebd.seconds;
  });
}
BENCHMARK_CAPTURE(PolledFiles, 1000, 1000)->UseManualTime()->Iterations(1);

}  // namespace
}  // namespace zeb::bench
