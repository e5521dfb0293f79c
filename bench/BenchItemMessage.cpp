// Item messages and the control link's bulk line. The ratio is to a plain scan of the same message for "=":
// what reading its bytes once costs, measured in the same run.
#include <benchmark/benchmark.h>

#include <cstring>

#include "platform/simulated/TestEnvironment.h"
#include "sources/ControlLink.h"
#include "sources/ItemMessage.h"
#include "sources/SilentWindow.h"

namespace zeb {
namespace {

struct Station : ServiceEvents {
  Station() { service.SetItemCount(kMaxNextItems); }
  TestEnvironment ports;
  clsZEBService service{ports.environment, nullptr, *this};
  SilentWindow window;
  ItemIntake intake{service, window};
  ControlLink link{intake, ports.carts};
};

const std::string kFiveKeys =
    "IType=7 ITitle=\"The long road home\" AName1=\"The Station Band\" EstStTm=3723.5 IRef=AB1234";
const std::string kTwentyKeys =
    "IType=7 IDt=46083.5 EstStTm=3723.5 ITitle=\"The long road home\" IDesc1=\"A description\" IDesc2=More "
    "IRef=AB1234 "
    "SchRef=SCH-991 AName1=\"The Station Band\" AName2=\"A Guest\" CField1=one CField2=two StNotes=\"Play it "
    "again\" "
    "WNotes=\"For the page\" RNotes=\"For RDS\" PicFName=cover.jpg Composer=\"C. Omposer\" CMDur=181.25 "
    "CTDur=200 "
    "RecNo=HX-0042";

std::size_t PlainScan(const std::string& message) {
  std::size_t found = 0;
  for (const char* at = message.data(); at; ++found) {
    const auto left = static_cast<std::size_t>(message.data() + message.size() - at);
    at = static_cast<const char*>(std::memchr(at, '=', left));
    if (at) ++at;
  }
  return found;
}

// Nanoseconds of one plain scan.
double PlainScanTime(const std::string& message) {
  constexpr int kRounds = 20000;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kRounds; ++i) {
    std::size_t found = PlainScan(message);
    benchmark::DoNotOptimize(found);
    benchmark::ClobberMemory();
  }
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / kRounds;
}

void Report(benchmark::State& state, const std::string& message,
            std::chrono::steady_clock::time_point start) {
  const double each =
      std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() /
      static_cast<double>(state.iterations());
  state.counters["ratio"] = each / PlainScanTime(message);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(message.size()));
}

void BM_ParseItemMessage(benchmark::State& state, const std::string& message) {
  Station station;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    clsZEBItemInfo item;
    benchmark::DoNotOptimize(ParseItemMessage(message, station.intake, station.ports.carts, item));
  }
  Report(state, message, start);
}
BENCHMARK_CAPTURE(BM_ParseItemMessage, five_keys, kFiveKeys);
BENCHMARK_CAPTURE(BM_ParseItemMessage, twenty_keys, kTwentyKeys);

void BM_WriteItemMessage(benchmark::State& state) {
  Station station;
  clsZEBItemInfo item;
  ParseItemMessage(kTwentyKeys, station.intake, station.ports.carts, item);
  for (auto _ : state) benchmark::DoNotOptimize(WriteItemMessage(item));
}
BENCHMARK(BM_WriteItemMessage);

void BM_BulkLine(benchmark::State& state) {
  Station station;
  // Two lists by turns, so that no item is the same as the one before.
  std::string lines[2];
  for (int which = 0; which < 2; ++which) {
    lines[which] = "SET LOG CURRENTITEMS";
    for (int i = 0; i < 50; ++i) lines[which] += "," + kFiveKeys + " CField1=" + std::to_string(which);
  }
  std::size_t turn = 0;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) station.link.MessageFromController(1, lines[++turn % 2]);
  Report(state, lines[0], start);
}
BENCHMARK(BM_BulkLine);

}  // namespace
}  // namespace zeb
