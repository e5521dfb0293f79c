// KEY=value pairs on the lines of the control link and the label protocol, separated by blanks. Values are
// bytes with {XX} escapes, in double quotes when they hold blanks.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb {

// The value of one parameter in a command's arguments: found without regard to case at the start or after a
// blank; in double quotes it runs to the next double quote (or the end), else to the next blank. Its escapes
// are undone and it is decoded. "" when absent.
std::string ParameterValue(std::string_view arguments, std::string_view key);

// The value that starts at `start`: in double quotes to the next one (or the end), else to the next blank.
std::string_view RawValueAt(std::string_view message, std::size_t start);
// Its escapes undone and decoded.
std::string DecodeValue(std::string_view raw);

}  // namespace zeb
