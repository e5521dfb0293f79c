#include "text/LineSplitter.h"

namespace zeb {

bool LineSplitter::Feed(std::string_view bytes, const LineHandler& handle) {
  while (true) {
    const std::size_t end = bytes.find('\n');
    if (end == std::string_view::npos) break;
    std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    // The handler may make an end of this splitter, so the line must not stay in its buffer.
    std::string joined;
    if (!begun_.empty()) {
      if (TooLong(begun_.size() + line.size())) return false;
      joined.swap(begun_);
      line = joined.append(line);
    }
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.size() > maxLineBytes_) return false;
    if (!handle(line)) return true;
  }
  if (TooLong(begun_.size() + bytes.size())) return false;
  begun_.append(bytes);
  return true;
}

}  // namespace zeb
