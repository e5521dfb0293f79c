#include "platform/windows/WindowsPatterns.h"

#include <algorithm>

namespace zeb {
namespace {

// What stands for a run of one letter; "" for none.
std::string CodeFor(char letter, std::size_t count) {
  const std::string run(std::min<std::size_t>(count, 4), letter);
  switch (letter) {
    case 'd':
      return run;
    case 'M':
      return std::string(run.size(), 'm');
    case 'y':
      return count <= 2 ? "yy" : "yyyy";
    case 'h':
    case 'H':
      return count == 1 ? "h" : "hh";
    case 'm':
      return count == 1 ? "n" : "nn";
    case 's':
      return count == 1 ? "s" : "ss";
    case 't':
      return "AMPM";
    default:
      return "";  // an era
  }
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

// Reads from one pattern into another.
class Translation {
 public:
  explicit Translation(std::string_view pattern) : from_(pattern) {}

  std::string Take() {
    while (at_ < from_.size()) {
      const char c = from_[at_];
      if (c == '\'')
        Quoted();
      else if (std::string_view("dMyhHmstg").find(c) != std::string_view::npos)
        Code(c);
      else
        Text(from_.substr(at_++, 1));
    }
    const std::size_t end = to_.find_last_not_of(' ');
    return to_.substr(0, end == std::string::npos ? 0 : end + 1);
  }

 private:
  void Code(char letter) {
    const std::size_t begin = at_;
    while (at_ < from_.size() && from_[at_] == letter) ++at_;
    to_ += CodeFor(letter, at_ - begin);
  }

  // '' is one apostrophe, within quotes and without.
  void Quoted() {
    std::string text;
    ++at_;
    for (; at_ < from_.size(); ++at_) {
      if (from_[at_] != '\'') {
        text += from_[at_];
      } else if (at_ + 1 < from_.size() && from_[at_ + 1] == '\'') {
        text += from_[at_++];
      } else {
        break;
      }
    }
    ++at_;
    Text(text.empty() ? std::string_view("'") : std::string_view(text));
  }

  // Letters are put into quotes, since they would be codes.
  void Text(std::string_view text) {
    bool quoted = false;
    for (const char c : text) {
      if (IsLetter(c) != quoted) {
        to_ += '"';
        quoted = !quoted;
      }
      if (c == '"' || c == '\\') to_ += '\\';
      to_ += c;
    }
    if (quoted) to_ += '"';
  }

  const std::string_view from_;
  std::size_t at_ = 0;
  std::string to_;
};

}  // namespace

std::string PatternFromWindows(std::string_view pattern) {
  return Translation(pattern).Take();
}

}  // namespace zeb
