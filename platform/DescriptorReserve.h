// DescriptorReserve: how many of a process's descriptors connections leave alone.
#pragma once

#include <algorithm>
#include <cstddef>

namespace zeb {

// Of `limit`, what is kept for workers, with a template, a page and a picture each, the settings and their
// journal, log files.
constexpr std::size_t DescriptorReserve(std::size_t limit) {
  constexpr std::size_t kMost = 128;
  return std::min(limit / 4, kMost);
}

}  // namespace zeb
