#include "text/Sha256.h"

#include <algorithm>
#include <bit>

#include "text/Sha256Instructions.h"

namespace zeb {
namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kLengthBytes = 8;

using Words = std::array<std::uint32_t, 8>;

std::uint32_t WordAt(const char* bytes) {
  std::uint32_t word = 0;
  for (std::size_t i = 0; i < sizeof word; ++i) word = word << 8 | static_cast<unsigned char>(bytes[i]);
  return word;
}

void AppendWord(std::string& to, std::uint32_t word) {
  for (int shift = 24; shift >= 0; shift -= 8) to += static_cast<char>(word >> shift & 0xFFu);
}

std::array<std::uint32_t, 64> Schedule(const char* block) {
  std::array<std::uint32_t, 64> w{};
  for (std::size_t i = 0; i < 16; ++i) w[i] = WordAt(block + 4 * i);
  for (std::size_t i = 16; i < w.size(); ++i) {
    const std::uint32_t a = w[i - 15], b = w[i - 2];
    w[i] = w[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) + w[i - 7] +
           (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
  }
  return w;
}

void TakeBlock(Words& state, const char* block) {
  const std::array<std::uint32_t, 64> w = Schedule(block);
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t i = 0; i < w.size(); ++i) {
    const std::uint32_t one = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                              ((e & f) ^ (~e & g)) + kSha256Rounds[i] + w[i];
    const std::uint32_t two =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + one;
    d = c;
    c = b;
    b = a;
    a = one + two;
  }
  const Words after = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += after[i];
}

void TakeBlocks(Words& state, std::string_view blocks, Sha256Way way) {
  if (way == Sha256Way::kFastest && HasSha256Instructions())
    return TakeSha256Blocks(state, blocks.data(), blocks.size() / kBlock);
  for (std::size_t at = 0; at < blocks.size(); at += kBlock) TakeBlock(state, blocks.data() + at);
}

// What is left, the mark behind it, and the length in bits at the end of the last block.
std::string LastBlocks(std::string_view rest, std::uint64_t bytes) {
  std::string last(rest);
  last += '\x80';
  last.resize((last.size() + kLengthBytes + kBlock - 1) / kBlock * kBlock - kLengthBytes);
  AppendWord(last, static_cast<std::uint32_t>(bytes * 8 >> 32));
  AppendWord(last, static_cast<std::uint32_t>(bytes * 8));
  return last;
}

}  // namespace

std::string Sha256(std::string_view bytes, Sha256Way way) {
  Words state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  const std::size_t whole = bytes.size() / kBlock * kBlock;
  TakeBlocks(state, bytes.substr(0, whole), way);
  const std::string last = LastBlocks(bytes.substr(whole), bytes.size());
  TakeBlocks(state, last, way);
  std::string digest;
  for (const std::uint32_t word : state) AppendWord(digest, word);
  return digest;
}

std::string Sha256Text(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : Sha256(bytes)) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 0xFu];
  }
  return text;
}

}  // namespace zeb
