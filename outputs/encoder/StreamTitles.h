// StreamTitles: the titles in a stream as its listeners get them: between stretches of sound, when they have
// asked for them. Reads bytes that come in pieces and keeps nothing of the sound.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "core/PublicPlace.h"
#include "outputs/http/HttpAddress.h"
#include "outputs/http/HttpAnswer.h"

namespace zeb {

class StreamTitles {
 public:
  void Take(std::string_view bytes);

  // The last title, in the server's bytes.
  bool HasTitle() const { return hasTitle_; }
  const std::string& Title() const { return title_; }
  const std::string& Problem() const { return problem_; }  // why there will be none; "" so far

 private:
  void TakeHead(std::string_view bytes);
  void TakeSound(std::string_view& bytes);
  void TakeBlock(std::string_view& bytes);

  HttpAnswer head_{0};
  std::size_t interval_ = 0;  // bytes of sound between titles; 0: the head is not whole
  std::size_t sound_ = 0;     // of it still to come
  std::size_t wanted_ = 0;    // bytes of the block with the title
  std::string block_;
  std::string title_;
  bool hasTitle_ = false;
  std::string problem_;
};

// What a listener sends.
std::string StreamRequest(const HttpAddress& address);

// What a stream's title, in the server's bytes, says of the one that was sent.
struct TitleVerdict {
  bool same = false;
  std::string seen;    // as a player shows it
  std::string advice;  // when the letters were taken for another character set: what to do about it
};
TitleVerdict CompareTitle(const PublicPlace& place, std::string_view bytes);

}  // namespace zeb
