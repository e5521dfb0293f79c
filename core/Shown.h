// Shown: what an output published last, for people to look at: texts as they were sent, pages by name, size
// and first lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zeb {

struct Shown {
  struct Page {
    std::string name;  // its destination
    std::uint64_t bytes = 0;
    std::string firstLines;  // cut
  };

  std::string text;  // of outputs that send texts; several are lines
  std::vector<Page> pages;

  bool operator==(const Shown&) const = default;
};

}  // namespace zeb
