#include <array>

#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"

namespace zeb {

namespace {

// One way in which editors write a tag's brackets.
struct Escape {
  char first;  // of both
  std::string_view opener, closer;
  std::size_t next;  // where `first` is found next
  std::size_t open;  // tags opened whose end has not been found yet
};

bool StandsAt(std::string_view page, std::size_t at, std::string_view word) {
  return EqualIgnoringAsciiCase(page.substr(at, word.size()), word);
}

}  // namespace

std::string UndoEscapedTags(std::string_view page) {
  std::array<Escape, 2> escapes = {
      {{'&', "&lt;ZEB_", "&gt;", page.find('&'), 0}, {'%', "%3cZEB_", "%3e", page.find('%'), 0}}};
  std::string result;
  result.reserve(page.size());
  std::size_t copied = 0;
  const auto replace = [&](std::size_t at, std::size_t length, std::string_view by) {
    result.append(page, copied, at - copied);
    result += by;
    copied = at + length;
  };
  for (;;) {
    Escape& escape = escapes[0].next <= escapes[1].next ? escapes[0] : escapes[1];
    const std::size_t at = escape.next;
    if (at == std::string_view::npos) break;
    if (StandsAt(page, at, escape.opener)) {
      replace(at, escape.opener.size(), "<ZEB_");
      ++escape.open;
    } else if (escape.open > 0 && StandsAt(page, at, escape.closer)) {
      // Each opener takes the first end behind it that no earlier one took, so other escapes stay.
      replace(at, escape.closer.size(), ">");
      --escape.open;
    }
    escape.next = page.find(escape.first, at + 1);
  }
  result.append(page, copied);
  return result;
}

}  // namespace zeb
