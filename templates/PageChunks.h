// Where a page may be cut into pieces that are expanded one by one.
#pragma once

#include <cstddef>
#include <string_view>

namespace zeb {

inline constexpr std::size_t kChunkCharacters = 2000;

// The offset behind the piece that starts at `from`: at most `characters` characters further, but never
// inside a tag, a conditional section or a pair that protects a bracket ("<<", "[["). One of these that is
// longer is taken whole; without an end, it reaches to the end of the page. The constructs are those that
// begin at or after `from`. Over a whole page, linear.
std::size_t ChunkEnd(std::string_view page, std::size_t from, std::size_t characters = kChunkCharacters);

}  // namespace zeb
