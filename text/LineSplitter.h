// LineSplitter: cuts a byte stream into lines. A line ends in CR LF or LF, in whatever pieces it arrives.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace zeb {

inline constexpr std::size_t kMaxLineBytes = 1024 * 1024;

class LineSplitter {
 public:
  // Gets a line without its end; false: no more lines are wanted.
  using LineHandler = std::function<bool(std::string_view line)>;

  explicit LineSplitter(std::size_t maxLineBytes = kMaxLineBytes) : maxLineBytes_(maxLineBytes) {}

  // Hands on each line that `bytes` completes. False when a line is longer than allowed; the stream cannot be
  // read on then.
  [[nodiscard]] bool Feed(std::string_view bytes, const LineHandler& handle);
  void Reset() { begun_.clear(); }

 private:
  // A line end of two bytes may still be in it.
  bool TooLong(std::size_t unfinished) const { return unfinished > maxLineBytes_ + 1; }

  std::size_t maxLineBytes_;
  std::string begun_;  // the line whose end has not arrived yet
};

}  // namespace zeb
