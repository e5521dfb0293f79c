// Shown: what an output published last, for people to look at: texts as they were sent, pages by name, size
// and first lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

struct Shown {
  struct Page {
    std::string name;  // its destination
    std::uint64_t bytes = 0;
    std::string firstLines;  // cut
    std::string digest;      // of its bytes, as sha256sum writes it
  };

  std::string text;  // of outputs that send texts; several are lines
  std::vector<Page> pages;

  bool operator==(const Shown&) const = default;
};

// Text as it can be shown anywhere: lines without control characters, none of them empty, cut where it is
// very long.
std::string ShownText(std::string_view text);
// The same of the first few lines.
std::string FirstLines(std::string_view text);

}  // namespace zeb
