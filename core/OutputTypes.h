// The kinds of output: type codes, their names in settings and logs, and status codes.
#pragma once

#include <array>
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
  std::string_view description;  // offered when adding an output; empty: not offered
};

// In the order in which settings are loaded and saved.
inline constexpr std::array<OutputTypeInfo, 7> kOutputTypes = {{
    {OutputType::kWeb, "Web", "Web", "Internet (Web/WAP) - Displays information on a Web/WAP Site using FTP"},
    {OutputType::kHTTP, "HTTP", "HTTPRequest",
     "HTTP Request - Encodes the information into a request sent to a web server"},
    {OutputType::kSerial, "Serial", "Serial", "Serial - Send the information out of a Serial (COM) Port"},
    {OutputType::kEncoder, "Encoder", "Encoder",
     "Internet Encoder (Streaming) - Sends information to an Internet Audio Encoder"},
    {OutputType::kFile, "File", "File", "File Output - Sends information to a file on your computer"},
    {OutputType::kDAB, "DAB", "DAB",
     "Digital Radio (DAB) - Sends information to a transmitter to broadcast to DAB radios"},
    {OutputType::kRDS, "RDS", "RDS", ""},
}};

// The order of the add-output list.
inline constexpr std::array<OutputType, 6> kOutputTypesOffered = {OutputType::kWeb,  OutputType::kEncoder,
                                                                  OutputType::kFile, OutputType::kDAB,
                                                                  OutputType::kHTTP, OutputType::kSerial};

// Null for a code without a type.
constexpr const OutputTypeInfo* FindOutputType(std::int32_t code) {
  for (const OutputTypeInfo& info : kOutputTypes)
    if (static_cast<std::int32_t>(info.type) == code) return &info;
  return nullptr;
}

inline constexpr std::string_view kDefaultSimpleTextFormat =
    "[(<ZEB_NOW_ITEMTYPE>=Song)<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>...<ZEB_NOW_NOTES>]"
    "[(<ZEB_NOW_ITEMTYPE>!=Song)<ZEB_NOW_ITEMNAME>]"
    "[(<ZEB_COMING_ARTISTS>!=)(Coming soon, <ZEB_COMING_ARTISTS>)]";

}  // namespace zeb
