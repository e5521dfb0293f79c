// Carets: the program counts bytes of UTF-8, edit widgets count UTF-16. Here one becomes the other.
#pragma once

#include <cstddef>
#include <string_view>

namespace zeb {

// From byte offsets to carets, quick for offsets that ascend. The text (valid UTF-8) must outlive it.
class Utf16Carets {
 public:
  explicit Utf16Carets(std::string_view text) : text_(text) {}

  // The caret before the character at `offset`; behind the last one for an offset beyond the end.
  int At(std::size_t offset) {
    if (offset < offset_) offset_ = 0, caret_ = 0;
    for (; offset_ < offset && offset_ < text_.size(); ++offset_) caret_ += Units(text_[offset_]);
    return caret_;
  }

  // Two units for what UTF-8 needs four bytes for; bytes behind a character's first count for nothing.
  static int Units(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return (value & 0xC0u) == 0x80u ? 0 : value >= 0xF0u ? 2 : 1;
  }

 private:
  const std::string_view text_;
  std::size_t offset_ = 0;
  int caret_ = 0;
};

// The offset of the character behind the caret. A caret inside a pair counts as behind it.
inline std::size_t ByteOffset(std::string_view text, int caret) {
  std::size_t offset = 0;
  for (int passed = 0; offset < text.size(); ++offset) {
    const int units = Utf16Carets::Units(text[offset]);
    if (units > 0 && passed >= caret) break;
    passed += units;
  }
  return offset;
}

}  // namespace zeb
