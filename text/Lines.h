// Lines and words of a text. Nothing is copied: what is given are parts of the text.
#pragma once

#include <string_view>
#include <vector>

namespace zeb {

// Calls `take` with each piece of the text between CR LF, LF or CR, also with the last and an empty one.
template <class Take>
void ForEachLine(std::string_view text, const Take& take) {
  while (true) {
    const std::size_t end = text.find_first_of("\r\n");
    take(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
  }
}

// The pieces between the separators, empty ones too; of an empty text one that is empty.
std::vector<std::string_view> SplitAt(char separator, std::string_view text);

// The text before the first blank, and that behind it.
struct FirstWord {
  std::string_view word, rest;
};
FirstWord CutFirstWord(std::string_view text);

}  // namespace zeb
