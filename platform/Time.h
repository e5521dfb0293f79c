// The two clocks, as types. Values come from EventLoop only; nothing else reads a clock.
#pragma once

#include <chrono>

namespace zeb {

// A span of time. 1500ms, 2s and the like convert to it.
using Duration = std::chrono::nanoseconds;

// Time since some fixed moment before the program started; never jumps. For intervals and limits.
using MonotonicTime = std::chrono::nanoseconds;

// The station's local civil time to the millisecond; may jump (summer time, clock corrections). For people.
using WallTime = std::chrono::local_time<std::chrono::milliseconds>;

}  // namespace zeb
