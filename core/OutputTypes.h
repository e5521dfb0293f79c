// The kinds of output: each is one row, which says how it is named and counted wherever it is shown, and
// where it stands in each order. A new kind adds its code and its row here, and its makers in
// outputs/OutputTable.cpp.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zeb {

enum class OutputType : std::int32_t {
  kDAB = 1,
  kEncoder = 2,
  kFile = 3,
  kRDS = 4,
  kSerial = 5,
  kHTTP = 14,
  kWeb = 15
};

inline constexpr int kNumberOutputTypes = 15;  // codes run from 1; those not named above have no outputs

enum OutputStatus : std::int32_t {
  kStatusOff = 0,
  kStatusConnecting = 1,
  kStatusConnected = 2,
  kStatusLoggingOn = 3,
  kStatusOK = 4,
  kStatusError = 5
};

// Colours are 0x00BBGGRR.
inline constexpr std::uint32_t kColourBlack = 0, kColourYellow = 0x0000FFFF, kColourRed = 0x000000FF;

struct OutputTypeInfo {
  OutputType type;
  std::string_view name;         // in log lines: "Update - Preparing Web 1"
  std::string_view settingsKey;  // below the service's key
  std::string_view one, many;    // of what it publishes: "updated 2 files, 1 web page"
  int clearing;                  // its place when a service is cleared, from 1
  int offered;                   // its place in the list of outputs that can be added; 0: not offered
  std::string_view description;  // in that list
};

// In the order in which settings are loaded and saved. Updates run in the order of the codes.
inline constexpr std::array kOutputTypes = {
    OutputTypeInfo{OutputType::kWeb, "Web", "Web", "web page", "web pages", 1, 1,
                   "Internet (Web/WAP) - Displays information on a Web/WAP Site using FTP"},
    OutputTypeInfo{OutputType::kHTTP, "HTTP", "HTTPRequest", "HTTP request", "HTTP requests", 3, 5,
                   "HTTP Request - Encodes the information into a request sent to a web server"},
    OutputTypeInfo{OutputType::kSerial, "Serial", "Serial", "serial text", "serial texts", 4, 6,
                   "Serial - Send the information out of a Serial (COM) Port"},
    OutputTypeInfo{OutputType::kEncoder, "Encoder", "Encoder", "encoder", "encoders", 2, 2,
                   "Internet Encoder (Streaming) - Sends information to an Internet Audio Encoder"},
    OutputTypeInfo{OutputType::kFile, "File", "File", "file", "files", 5, 3,
                   "File Output - Sends information to a file on your computer"},
    OutputTypeInfo{OutputType::kDAB, "DAB", "DAB", "DAB label", "DAB labels", 6, 4,
                   "Digital Radio (DAB) - Sends information to a transmitter to broadcast to DAB radios"},
    OutputTypeInfo{OutputType::kRDS, "RDS", "RDS", "RDS text", "RDS texts", 7, 0, ""},
};

namespace detail {

// The types with a place in an order, by place. `count` places, each taken once, or it does not compile.
template <std::size_t count>
constexpr std::array<OutputType, count> TypesInOrder(int OutputTypeInfo::*place) {
  std::array<OutputType, count> order{};
  std::array<bool, count> taken{};
  for (const OutputTypeInfo& info : kOutputTypes) {
    if (info.*place == 0) continue;
    const auto at = static_cast<std::size_t>(info.*place) - 1;
    if (taken.at(at)) throw "two types have one place";
    taken.at(at) = true;
    order.at(at) = info.type;
  }
  if (!std::all_of(taken.begin(), taken.end(), [](bool one) { return one; })) throw "a place is free";
  return order;
}

constexpr bool EachTypeHasOneRow() {
  for (const OutputType type : {OutputType::kDAB, OutputType::kEncoder, OutputType::kFile, OutputType::kRDS,
                                OutputType::kSerial, OutputType::kHTTP, OutputType::kWeb})
    if (std::count_if(kOutputTypes.begin(), kOutputTypes.end(),
                      [type](const OutputTypeInfo& info) { return info.type == type; }) != 1)
      return false;
  return true;
}

}  // namespace detail

inline constexpr auto kClearingOrder = detail::TypesInOrder<kOutputTypes.size()>(&OutputTypeInfo::clearing);
inline constexpr auto kOutputTypesOffered = detail::TypesInOrder<6>(&OutputTypeInfo::offered);
static_assert(detail::EachTypeHasOneRow());

// Null for a code without a type.
constexpr const OutputTypeInfo* FindOutputType(std::int32_t code) {
  for (const OutputTypeInfo& info : kOutputTypes)
    if (static_cast<std::int32_t>(info.type) == code) return &info;
  return nullptr;
}

constexpr std::string_view NameOf(OutputType type) {
  const OutputTypeInfo* info = FindOutputType(static_cast<std::int32_t>(type));
  return info ? info->name : std::string_view();
}

inline constexpr std::string_view kDefaultSimpleTextFormat =
    "[(<ZEB_NOW_ITEMTYPE>=Song)<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>...<ZEB_NOW_NOTES>]"
    "[(<ZEB_NOW_ITEMTYPE>!=Song)<ZEB_NOW_ITEMNAME>]"
    "[(<ZEB_COMING_ARTISTS>!=)(Coming soon, <ZEB_COMING_ARTISTS>)]";

}  // namespace zeb
