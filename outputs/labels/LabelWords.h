// The words of the label protocol (docs/manual/label-server.md), shared by its client and its server, and how
// long a label may be.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb {

inline constexpr std::string_view kLogOnCommand = "LOGON", kLabelCommand = "LABEL", kLogOffCommand = "LOGOFF";
inline constexpr std::string_view kServiceParameter = "SERVICE", kPasswordParameter = "PASSWORD",
                                  kTextParameter = "TEXT";
inline constexpr std::string_view kOkAnswer = "OK", kErrorAnswer = "ERROR";

// The first word of a line, and what follows the blank behind it.
std::string_view FirstWord(std::string_view line);
std::string_view AfterFirstWord(std::string_view line);
// ` KEY="value"`, escaped; to be put behind a command.
std::string LabelParameter(std::string_view key, std::string_view value);

inline constexpr std::size_t kMaxLabelBytes = 128;
// The bytes that a label takes on the air: EBU Latin when it has all the characters, else UTF-8.
std::size_t LabelBytes(std::string_view label);
// The start of the label that fits, cut between two characters.
std::string_view FittingLabel(std::string_view label);

}  // namespace zeb
