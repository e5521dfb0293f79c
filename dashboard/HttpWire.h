// HttpWire: HTTP/1.1 as bytes: reading requests and answers, writing both. Knows no sockets and no time.
//
// Boost.Beast's headers take long to compile: they are included in one file, behind these classes.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "dashboard/HttpMessage.h"
#include "platform/Result.h"

namespace zeb {

// Reads one request out of bytes that come in pieces.
class HttpRequestReader {
 public:
  enum class State { kMore, kDone, kFailed };

  HttpRequestReader();
  ~HttpRequestReader();
  HttpRequestReader(HttpRequestReader&&) noexcept;
  HttpRequestReader& operator=(HttpRequestReader&&) noexcept;

  // Takes what belongs to the request off the front of `buffer`. After kDone or kFailed it takes no more.
  State Take(std::string& buffer);
  // Whether the peer waits for "100 Continue" before it sends the body. True once.
  bool WantsContinue();

  HttpRequest TakeRequest();  // after kDone; its way in is the connection's to say
  const HttpAnswer& Refusal() const { return refusal_; }  // after kFailed

 private:
  State Refuse(int status, std::string_view reason);
  State Finish();

  struct Parser;
  std::unique_ptr<Parser> parser_;
  HttpAnswer refusal_;
  HttpRequest request_;
  std::size_t taken_ = 0;
  bool continueAsked_ = false;
};

enum class AnswerBody { kSent, kLeftOut, kEndless };  // kLeftOut: of HEAD; kEndless: follows until the close

// The answer with what all answers have: what browsers may do with it, and whether the connection stays.
std::string WriteHttpAnswer(const HttpAnswer& answer, bool keepAlive, AnswerBody body);

// For clients. `body` is sent as JSON when it is not empty.
std::string WriteHttpRequest(std::string_view method, std::string_view target, std::string_view body);

// For clients: reads one answer.
class HttpAnswerReader {
 public:
  // An answer whose body is longer than `mostBytes` fails; nothing: a stream that is taken as it comes.
  explicit HttpAnswerReader(std::optional<std::size_t> mostBytes = kMostAnswerBytes);
  ~HttpAnswerReader();
  Outcome Take(std::string_view bytes);
  Outcome TakeEnd();  // the server has closed; fails when the answer is not whole
  bool HasStatus() const;
  bool Done() const;
  int Status() const;
  std::string Header(std::string_view name) const;
  std::string TakeBody();  // what has come of it since the last time

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
  std::string buffer_;
};

}  // namespace zeb
