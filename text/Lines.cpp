#include "text/Lines.h"

namespace zeb {

std::string_view TakeLine(std::string_view& rest) {
  std::size_t end = 0;
  while (end < rest.size() && rest[end] != '\r' && rest[end] != '\n') ++end;
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end);
  if (!rest.empty()) rest.remove_prefix(rest.starts_with("\r\n") ? 2 : 1);
  return line;
}

std::vector<std::string_view> SplitAt(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + separator.size());
  }
}

FirstWord CutFirstWord(std::string_view text) {
  const std::size_t blank = text.find(' ');
  if (blank == std::string_view::npos) return {text, {}};
  return {text.substr(0, blank), text.substr(blank + 1)};
}

}  // namespace zeb
