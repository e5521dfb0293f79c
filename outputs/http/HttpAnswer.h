// HttpAnswer: a web server's answer, read out of bytes that come in pieces. Bounded: what is longer fails.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zeb {

class HttpAnswer {
 public:
  explicit HttpAnswer(std::size_t mostBytes) : mostBytes_(mostBytes) {}

  void Take(std::string_view bytes);
  void TakeEnd();  // the server has closed the connection

  bool HasHead() const { return bodyAt_ > 0; }
  // Whole, or failed.
  bool Ended() const { return whole_ || !problem_.empty(); }
  const std::string& Problem() const { return problem_; }  // what is wrong with it; "" so far

  // Once the head is there:
  int Status() const;
  std::string StatusLine() const;
  std::string Header(std::string_view name) const;  // "" when it is not there; without regard to case
  std::string_view Body() const;                    // what has come of it, chunks put together

 private:
  void ReadHead();
  void ReadBody();
  bool Unchunk();

  std::size_t mostBytes_;
  std::string bytes_;
  std::size_t bodyAt_ = 0;  // 0: the head is not whole
  std::optional<std::size_t> length_;
  bool chunked_ = false;
  std::string unchunked_;
  std::size_t chunkAt_ = 0;  // of the next chunk
  bool whole_ = false;
  std::string problem_;
};

}  // namespace zeb
