// LatencyHistogram: how often something took how long, in steps that a graph is drawn from.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "platform/Time.h"

namespace zeb {

struct LatencyHistogram {
  // Seconds. Updates come 1.5 s after the last information, unless they are instant.
  static constexpr std::array<double, 12> kBounds = {0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 1.5, 2, 5, 10, 30};

  std::array<std::uint64_t, kBounds.size() + 1>
      counts{};    // up to each bound and above the one before; the rest
  double sum = 0;  // seconds

  void Add(Duration time) {
    const double seconds = std::chrono::duration<double>(time).count();
    const auto bound = std::lower_bound(kBounds.begin(), kBounds.end(), seconds);
    ++counts[static_cast<std::size_t>(bound - kBounds.begin())];
    sum += seconds;
  }
};

}  // namespace zeb
