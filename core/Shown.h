// Shown: what an output published last, for people to look at: texts as they were sent, pages by name, size
// and how they begin.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/PageDigest.h"
#include "core/ServiceSnapshot.h"
#include "text/ValueEscapes.h"

namespace zeb {

struct Shown {
  // What it was made of.
  struct Source {
    std::shared_ptr<const std::string> templateText{};  // null: that is not known
    std::string simpleText{};                           // the template behind <ZEB_SIMPLETEXT>
    ValueEscape escape = ValueEscape::kNone;
    bool urlEncode = false;
    bool operator==(const Source&) const = default;
  };

  struct Page {
    std::string name;  // its destination
    std::uint64_t bytes = 0;
    std::string beginning{};  // of its text, as it is: who shows it asks for its FirstLines
    PageDigest digest{};      // of its bytes
    SnapshotPtr snapshot{};   // what it shows
    Source source{};
  };

  std::string text;  // of outputs that send texts; several are lines
  Source source{};   // of the text; of several, of the last
  std::vector<Page> pages;

  bool operator==(const Shown&) const = default;
};

// Text as it can be shown anywhere: lines without control characters, none of them empty, cut where it is
// very long.
std::string ShownText(std::string_view text);
// The same of the first few lines, which are looked for in the first so many bytes.
inline constexpr std::size_t kMostFirstBytes = 1200;
std::string FirstLines(std::string_view text);

}  // namespace zeb
