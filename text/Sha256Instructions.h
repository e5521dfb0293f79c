// SHA-256 by the processor's own instructions, where it has them: pages are digested at each update, and this
// takes an eighth of the time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zeb {

bool HasSha256Instructions();
// Takes blocks of 64 bytes into the state. Only where there are the instructions.
void TakeSha256Blocks(std::array<std::uint32_t, 8>& state, const char* bytes, std::size_t blocks);

}  // namespace zeb
