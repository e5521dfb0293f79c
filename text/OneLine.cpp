#include "text/OneLine.h"

#include "text/Utf8.h"

namespace zeb {

std::string OneLine(std::string_view text, std::size_t maxCharacters) {
  const std::string_view kept = FirstCharacters(text, maxCharacters);
  std::string line;
  line.reserve(kept.size());
  for (const char c : kept) {
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (!control)
      line += c;
    else if (line.empty() || line.back() != ' ')
      line += ' ';
  }
  return line;
}

}  // namespace zeb
