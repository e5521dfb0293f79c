// Text cut apart. For bytes that arrive in pieces there is LineSplitter.
#pragma once

#include <string_view>
#include <vector>

namespace zeb {

// Takes the first line off `rest` and gives it without its end: CR LF, CR or LF.
std::string_view TakeLine(std::string_view& rest);

// What lies between the separators, empty parts too: one more than there are separators.
std::vector<std::string_view> SplitAt(std::string_view text, std::string_view separator);

}  // namespace zeb
