// Wall time of the benchmarks, in seconds, and what is made of many times.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <thread>
#include <vector>

namespace zeb::bench {

using Moment = std::chrono::steady_clock::time_point;

inline Moment Now() {
  return std::chrono::steady_clock::now();
}
inline double Seconds(Moment from, Moment to) {
  return std::chrono::duration<double>(to - from).count();
}
inline Moment Later(Moment moment, double seconds) {
  return moment + std::chrono::duration_cast<Moment::duration>(std::chrono::duration<double>(seconds));
}
inline void Sleep(double seconds) {
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

// Of values in any order: 0.5 is the median, 1 the greatest. 0 of none.
inline double Quantile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const auto at = static_cast<std::size_t>(share * static_cast<double>(values.size()));
  return values[std::min(at, values.size() - 1)];
}
inline double Median(std::vector<double> values) {
  return Quantile(std::move(values), 0.5);
}

}  // namespace zeb::bench
