#include "templates/PageChunks.h"

#include <algorithm>
#include <array>

#include "text/Utf8.h"

namespace zeb {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

struct Construct {
  std::string_view opener;  // its first character twice protects it
  char closer;
};
constexpr std::array<Construct, 2> kConstructs = {{{"[(<ZEB", ']'}, {"<ZEB", '>'}}};

bool StartsAt(std::string_view page, std::size_t at, std::string_view word) {
  return page.compare(at, word.size(), word) == 0;
}

// The start of the construct or protecting pair that a cut at `cut` would split; kNone when there is none.
// Only what follows the last closer before the cut can still be open there.
std::size_t SplitBy(std::string_view page, std::size_t from, std::size_t cut, const Construct& construct) {
  const std::size_t closed = page.substr(from, cut - from).rfind(construct.closer);
  std::size_t at = closed == kNone ? from : from + closed + 1;
  const std::string_view before = page.substr(0, cut);
  while ((at = before.find(construct.opener[0], at)) != kNone) {
    const bool pair = at + 1 < page.size() && page[at + 1] == construct.opener[0];
    if (pair ? at + 1 == cut : StartsAt(page, at, construct.opener)) return at;
    at += pair ? 2 : 1;
  }
  return kNone;
}

std::size_t EndOfConstruct(std::string_view page, std::size_t start) {
  for (const Construct& construct : kConstructs)
    if (StartsAt(page, start, construct.opener)) {
      const std::size_t close = page.find(construct.closer, start);
      return close == kNone ? page.size() : close + 1;
    }
  return start + 2;  // a protecting pair
}

// Moves the cut until it splits nothing; `move` says where to from the start of what it would split.
template <typename Move>
std::size_t Settle(std::string_view page, std::size_t from, std::size_t cut, Move move) {
  for (bool moved = true; moved && from < cut && cut < page.size();) {
    moved = false;
    for (const Construct& construct : kConstructs) {
      const std::size_t split = SplitBy(page, from, cut, construct);
      if (split == kNone) continue;
      cut = move(split);
      moved = true;
      break;
    }
  }
  return cut;
}

}  // namespace

std::size_t ChunkEnd(std::string_view page, std::size_t from, std::size_t characters) {
  const std::size_t limit = SkipCharacters(page, from, characters);
  if (limit == page.size()) return limit;  // the last piece is never cut
  const std::size_t cut = Settle(page, from, limit, [](std::size_t start) { return start; });
  if (cut > from) return cut;
  // What starts here is longer than a piece, or linked with something that is.
  return Settle(page, from, EndOfConstruct(page, from),
                [page](std::size_t start) { return EndOfConstruct(page, start); });
}

}  // namespace zeb
