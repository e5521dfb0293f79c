// What an encoder output is told to do: its settings, and the commands of its texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/OutputTypes.h"
#include "core/SettingFields.h"
#include "text/Encodings.h"

namespace zeb {

// The codes in the settings; any other number is no encoder.
enum EncoderKind : std::int32_t {
  kRealProducer = 1,
  kShoutcast = 2,
  kAsfEncoder = 4,
  kWindowsMediaEncoder7 = 7
};

struct EncoderSettings {
  std::int32_t EncoderType = 0;
  std::string SimpleTextFormat = "####TEXT:" + std::string(kDefaultSimpleTextFormat);
  bool SendEmptyStrings = false;
  std::string ASDFileLocation;
  std::string WME7ComputerName, WME7StreamIDName;
  std::string SHOUTCastServerName = "127.0.0.1";
  std::int32_t SHOUTCastServerPort = 8000;
  std::string SHOUTCastServerPassword;
  std::string SHOUTCastEncoding;  // "full": the title is percent-encoded; "": only its blanks are
  CharacterSet characterSet = CharacterSet::kUtf8;
  // When set, the title is sent the way that present Icecast servers take it, to this mount point.
  std::string IcecastMount;
  std::string IcecastUsername = "source";
  // How often that server is asked whether the stream began anew and so lost its title, in seconds; 0: never.
  std::int32_t IcecastCheckSeconds = 10;
  std::string EscapeValues;     // a word of text/ValueEscapes.h
  std::string VerifyStreamURL;  // the stream as listeners get it; "": its titles are not looked at
};

SettingTable<EncoderSettings> EncoderSettingTable();

struct EncoderCommand {
  std::string type;
  std::string value;
};
// "TYPE:value", with the ":" among the first 50 characters; anything else is a TEXT command as a whole.
EncoderCommand SplitCommand(std::string_view piece);

}  // namespace zeb
