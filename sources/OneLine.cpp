#include "sources/OneLine.h"

#include <algorithm>

#include "text/Utf8.h"

namespace zeb {

std::string OneLine(std::string_view text, std::size_t maxCharacters) {
  std::string line(FirstCharacters(text, maxCharacters));
  std::replace_if(
      line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; },
      ' ');
  return line;
}

}  // namespace zeb
