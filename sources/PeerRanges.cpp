#include "sources/PeerRanges.h"

#include <algorithm>
#include <cstddef>

#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

constexpr int kAddressBits = 128;
constexpr int kMappedBits = 96;  // what stands before an IPv4 address in its mapped form

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// A number of 1 to 3 digits; nothing above `most`.
std::optional<int> SmallNumber(std::string_view text, int most) {
  if (text.empty() || text.size() > 3 || !std::all_of(text.begin(), text.end(), IsDigit)) return std::nullopt;
  const int number = LeadingDigits(text);
  return number <= most ? std::optional<int>(number) : std::nullopt;
}

bool ParseIPv4(std::string_view text, std::uint8_t* to) {
  for (int i = 0; i < 4; ++i) {
    const std::size_t dot = i < 3 ? text.find('.') : text.size();
    if (dot == std::string_view::npos) return false;
    const auto part = SmallNumber(text.substr(0, dot), 255);
    if (!part) return false;
    to[i] = static_cast<std::uint8_t>(*part);
    text.remove_prefix(std::min(dot + 1, text.size()));
  }
  return true;
}

std::optional<unsigned> HexGroup(std::string_view text) {
  if (text.empty() || text.size() > 4) return std::nullopt;
  unsigned value = 0;
  for (const char given : text) {
    const char c = AsciiLower(given);
    if (IsDigit(c))
      value = value * 16 + static_cast<unsigned>(c - '0');
    else if (c >= 'a' && c <= 'f')
      value = value * 16 + static_cast<unsigned>(c - 'a' + 10);
    else
      return std::nullopt;
  }
  return value;
}

enum class Ending { kGroup, kMayBeIPv4 };

// The bytes of groups divided by ":", without "::". Nothing when they are malformed or more than 16 bytes.
std::optional<std::vector<std::uint8_t>> ParseGroups(std::string_view text, Ending ending) {
  std::vector<std::uint8_t> bytes;
  while (!text.empty()) {
    const std::size_t colon = text.find(':');
    const std::string_view part = text.substr(0, colon);
    const bool last = colon == std::string_view::npos;
    if (last && ending == Ending::kMayBeIPv4 && part.find('.') != std::string_view::npos) {
      std::uint8_t four[4];
      if (!ParseIPv4(part, four)) return std::nullopt;
      bytes.insert(bytes.end(), four, four + 4);
    } else {
      const auto group = HexGroup(part);
      if (!group) return std::nullopt;
      bytes.push_back(static_cast<std::uint8_t>(*group >> 8));
      bytes.push_back(static_cast<std::uint8_t>(*group & 0xFF));
    }
    if (bytes.size() > 16) return std::nullopt;
    if (last) break;
    text.remove_prefix(colon + 1);
    if (text.empty()) return std::nullopt;  // ends in a single ":"
  }
  return bytes;
}

std::optional<IpAddress> ParseIPv6(std::string_view text) {
  IpAddress address{};
  const std::size_t gap = text.find("::");
  if (gap == std::string_view::npos) {
    const auto bytes = ParseGroups(text, Ending::kMayBeIPv4);
    if (!bytes || bytes->size() != 16) return std::nullopt;
    std::copy(bytes->begin(), bytes->end(), address.begin());
    return address;
  }
  const auto front = ParseGroups(text.substr(0, gap), Ending::kGroup);
  const auto back = ParseGroups(text.substr(gap + 2), Ending::kMayBeIPv4);
  if (!front || !back || front->size() + back->size() > 14) return std::nullopt;
  std::copy(front->begin(), front->end(), address.begin());
  std::copy(back->begin(), back->end(), address.end() - static_cast<std::ptrdiff_t>(back->size()));
  return address;
}

}  // namespace

std::optional<IpAddress> ParseIpAddress(std::string_view text) {
  if (text.find(':') != std::string_view::npos) return ParseIPv6(text.substr(0, text.find('%')));
  IpAddress address{};
  address[10] = address[11] = 0xFF;
  if (!ParseIPv4(text, address.data() + 12)) return std::nullopt;
  return address;
}

bool PeerRanges::Range::Holds(const IpAddress& address) const {
  const auto whole = static_cast<std::size_t>(bits / 8);
  if (!std::equal(start.begin(), start.begin() + static_cast<std::ptrdiff_t>(whole), address.begin()))
    return false;
  const int rest = bits % 8;
  return rest == 0 || (start[whole] ^ address[whole]) >> (8 - rest) == 0;
}

std::optional<PeerRanges::Range> PeerRanges::ParseRange(std::string_view text) {
  const std::size_t slash = text.find('/');
  const auto address = ParseIpAddress(text.substr(0, slash));
  if (!address) return std::nullopt;
  Range range{*address, kAddressBits};
  if (slash == std::string_view::npos) return range;
  const bool isIPv4 = text.substr(0, slash).find(':') == std::string_view::npos;
  const auto bits = SmallNumber(text.substr(slash + 1), isIPv4 ? kAddressBits - kMappedBits : kAddressBits);
  if (!bits) return std::nullopt;
  range.bits = *bits + (isIPv4 ? kMappedBits : 0);
  return range;
}

PeerRanges PeerRanges::Default() {
  std::vector<std::string> bad;
  return Parse("127.0.0.0/8,::1,169.254.0.0/16,fe80::/10,10.0.0.0/8,172.16.0.0/12,192.168.0.0/16,fc00::/7",
               bad);
}

PeerRanges PeerRanges::Parse(std::string_view list, std::vector<std::string>& badEntries) {
  PeerRanges peers;
  bool any = false;
  for (const std::string_view piece : SplitAt(list, ",")) {
    const std::string_view entry = TrimBlanks(piece);
    if (entry.empty()) continue;
    any = true;
    if (const auto range = ParseRange(entry))
      peers.ranges_.push_back(*range);
    else
      badEntries.emplace_back(entry);
  }
  return any ? peers : Default();
}

bool PeerRanges::Contains(std::string_view address) const {
  const auto parsed = ParseIpAddress(address);
  return parsed && std::any_of(ranges_.begin(), ranges_.end(),
                               [&](const Range& range) { return range.Holds(*parsed); });
}

}  // namespace zeb
