// Text cut apart into lines, parts and words. Nothing is copied: what is given are parts of the text. For
// bytes that arrive in pieces there is LineSplitter.
#pragma once

#include <string_view>
#include <vector>

namespace zeb {

// Takes the first line off `rest` and gives it without its end: CR LF, CR or LF.
std::string_view TakeLine(std::string_view& rest);

// Calls `take` with each piece of the text between line ends, also with the last one and with empty ones.
template <class Take>
void ForEachLine(std::string_view text, const Take& take) {
  for (bool ended = true; ended;) {
    const std::size_t before = text.size();
    const std::string_view line = TakeLine(text);
    ended = line.size() < before;
    take(line);
  }
}

// What lies between the separators, empty parts too: one more than there are separators.
std::vector<std::string_view> SplitAt(std::string_view text, std::string_view separator);

// The text before the first blank, and that behind it.
struct FirstWord {
  std::string_view word, rest;
};
FirstWord CutFirstWord(std::string_view text);

}  // namespace zeb
