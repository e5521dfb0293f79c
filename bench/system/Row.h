// A row of the table: one iteration, whose time is what the row gives back, in seconds. A failure is the
// row's.
#pragma once

#include <benchmark/benchmark.h>

#include <exception>

#include "bench/system/Measures.h"

namespace zeb::bench {

template <class Measure>
void Row(benchmark::State& state, Measure measure) {
  for (auto _ : state) {
    try {
      state.SetIterationTime(measure());
    } catch (const std::exception& failure) {
      state.SkipWithError(failure.what());
      break;
    }
  }
}

inline constexpr double kMicro = 1e6;
inline constexpr double kMilli = 1e3;

// Counters "zeb_NAME", "bare_NAME" and "ratio_NAME".
inline void Count(benchmark::State& state, const std::string& name, const Compared& compared,
                  double unit = 1) {
  state.counters["zeb_" + name] = compared.zeb * unit;
  state.counters["bare_" + name] = compared.bare * unit;
  state.counters["ratio_" + name] = compared.ratio;
}

}  // namespace zeb::bench
