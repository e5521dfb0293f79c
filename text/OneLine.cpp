#include "text/OneLine.h"

#include "text/Utf8.h"

namespace zeb {
namespace {

// The length in bytes of the control character at `at`; 0 when there is none.
std::size_t ControlAt(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return static_cast<unsigned char>(at + i < text.size() ? text[at + i] : 0);
  };
  if (byte(0) < 0x20 || byte(0) == 0x7F) return 1;
  if (byte(0) == 0xC2) return byte(1) >= 0x80 && byte(1) < 0xA0 ? 2 : 0;
  const bool lineEnd = byte(0) == 0xE2 && byte(1) == 0x80 && (byte(2) == 0xA8 || byte(2) == 0xA9);
  return lineEnd ? 3 : 0;
}

// Hands what lies between control characters to `keep`, and calls `atControl` for each of those.
template <class Keep, class AtControl>
void TakeApart(std::string_view text, Keep keep, AtControl atControl) {
  std::size_t kept = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = ControlAt(text, at);
    if (length == 0) {
      ++at;
      continue;
    }
    keep(text.substr(kept, at - kept));
    atControl();
    kept = at += length;
  }
  keep(text.substr(kept));
}

}  // namespace

std::string OneLine(std::string_view text, std::size_t maxCharacters) {
  const std::string_view kept = FirstCharacters(text, maxCharacters);
  std::string line;
  line.reserve(kept.size());
  TakeApart(
      kept, [&](std::string_view part) { line += part; },
      [&] {
        if (line.empty() || line.back() != ' ') line += ' ';
      });
  return line;
}

void BlankControls(std::string& text, std::size_t start) {
  std::size_t first = start;
  while (first < text.size() && ControlAt(text, first) == 0) ++first;
  if (first == text.size()) return;  // as nearly always
  std::string blanked;
  TakeApart(
      std::string_view(text).substr(first), [&](std::string_view part) { blanked += part; },
      [&] { blanked += ' '; });
  text.replace(first, std::string::npos, blanked);
}

std::string WithoutControls(std::string_view text) {
  std::string clean;
  TakeApart(
      text, [&](std::string_view part) { clean += part; }, [] {});
  return clean;
}

}  // namespace zeb
