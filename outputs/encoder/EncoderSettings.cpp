#include "outputs/encoder/EncoderSettings.h"

#include "core/clsZEBTemplate.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::size_t kLongestCommandType = 50;  // characters, with the ":"

using S = EncoderSettings;
constexpr SettingRow<S> kRows[] = {
    {.name = "EncoderType",
     .member = &S::EncoderType,
     .storedAs = StoredAs::kNumber,
     .entry = {.words = "1|2|4|7"}},
    {"SimpleTextFormat", &S::SimpleTextFormat},
    {"SendEmptyStrings", &S::SendEmptyStrings},
    {"ASDFileLocation", &S::ASDFileLocation},
    {"WME7ComputerName", &S::WME7ComputerName},
    {"WME7StreamIDName", &S::WME7StreamIDName},
    {"SHOUTCastServerName", &S::SHOUTCastServerName},
    {.name = "SHOUTCastServerPort",
     .member = &S::SHOUTCastServerPort,
     .storedAs = StoredAs::kNumber,
     .entry = kPortEntry},
    {"SHOUTCastServerPassword", &S::SHOUTCastServerPassword, StoredAs::kText, true},
    {.name = "SHOUTCastEncoding", .member = &S::SHOUTCastEncoding, .entry = {.words = "full"}},
    {"CharacterSet", &S::characterSet},
    {"IcecastMount", &S::IcecastMount},
    {"IcecastUsername", &S::IcecastUsername},
    {.name = "IcecastCheckSeconds",
     .member = &S::IcecastCheckSeconds,
     .storedAs = StoredAs::kNumber,
     .least = 0,
     .most = 3600},
    {.name = "EscapeValues", .member = &S::EscapeValues, .entry = kEscapeEntry},
    {"VerifyStreamURL", &S::VerifyStreamURL},
};

}  // namespace

SettingTable<EncoderSettings> EncoderSettingTable() {
  return kRows;
}

EncoderCommand SplitCommand(std::string_view piece) {
  constexpr std::string_view kSeparator = "####";
  if (piece.substr(0, kSeparator.size()) == kSeparator) piece.remove_prefix(kSeparator.size());
  EncoderCommand command{"", std::string(piece)};
  const std::size_t colon = piece.find(':');
  if (colon != std::string_view::npos && CountCharacters(piece.substr(0, colon)) < kLongestCommandType)
    command = {std::string(piece.substr(0, colon)), std::string(piece.substr(colon + 1))};
  if (command.type.empty()) command.type = "TEXT";
  return command;
}

}  // namespace zeb
