#include "dashboard/HttpWire.h"

#include <algorithm>
#include <boost/beast/core/buffers_range.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/fields.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/serializer.hpp>
#include <boost/beast/http/string_body.hpp>
#include <utility>

#include "dashboard/HttpTarget.h"
#include "text/LetterCase.h"

namespace zeb {

namespace http = boost::beast::http;
namespace asio = boost::asio;

namespace {

// Nothing from elsewhere, nothing inline, in no frame of another page.
constexpr char kContentPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
    "form-action 'self'; base-uri 'none'; frame-ancestors 'none'";

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), AsciiLower);
  return lower;
}

bool IsPlain(std::string_view text) {
  return std::none_of(text.begin(), text.end(),
                      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

template <class Message>
std::string HeaderBytes(Message& message) {
  http::serializer<Message::is_request::value, http::empty_body> serializer(message);
  std::string bytes;
  boost::beast::error_code error;
  while (!serializer.is_done()) {
    serializer.next(error, [&](boost::beast::error_code&, const auto& buffers) {
      std::size_t count = 0;
      for (const auto buffer : boost::beast::buffers_range_ref(buffers)) {
        bytes.append(static_cast<const char*>(buffer.data()), buffer.size());
        count += buffer.size();
      }
      serializer.consume(count);
    });
    if (error) break;
  }
  return bytes;
}

struct Told {
  int status;
  std::string_view reason;
};

Told WhatIsWrong(const boost::beast::error_code& error) {
  if (error == http::error::header_limit) return {431, "the request's header is too long"};
  if (error == http::error::body_limit) return {413, "the request is longer than 64 KiB"};
  if (error == http::error::bad_version) return {505, "this is HTTP/1.1"};
  return {400, "this is no HTTP request"};
}

}  // namespace

struct HttpRequestReader::Parser : http::request_parser<http::string_body> {};

// Not eager: it stops behind the header, before a body in chunks, which some bytes of make Beast's parser end
// the program by an assertion.
HttpRequestReader::HttpRequestReader() : parser_(std::make_unique<Parser>()) {
  parser_->eager(false);
  parser_->header_limit(kMostRequestBytes);
  parser_->body_limit(kMostRequestBytes);
}
HttpRequestReader::~HttpRequestReader() = default;
HttpRequestReader::HttpRequestReader(HttpRequestReader&&) noexcept = default;
HttpRequestReader& HttpRequestReader::operator=(HttpRequestReader&&) noexcept = default;

HttpRequestReader::State HttpRequestReader::Refuse(int status, std::string_view reason) {
  refusal_ = ErrorAnswer(status, reason);
  return State::kFailed;
}

HttpRequestReader::State HttpRequestReader::Take(std::string& buffer) {
  boost::beast::error_code error;
  while (!buffer.empty() && !parser_->is_done()) {
    const bool hadHeader = parser_->is_header_done();
    const std::size_t used = parser_->put(asio::buffer(buffer), error);
    buffer.erase(0, used);
    taken_ += used;
    if (error && error != http::error::need_more) break;
    if (!hadHeader && parser_->is_header_done() && parser_->get().target().size() > kMostTargetBytes)
      return Refuse(414, "the address is too long");
    if (parser_->is_header_done() && parser_->chunked())
      return Refuse(411, "the request must say its Content-Length; chunks are not taken");
    if (error == http::error::need_more || used == 0) break;
  }
  if (error && error != http::error::need_more) {
    const Told told = WhatIsWrong(error);
    return Refuse(told.status, told.reason);
  }
  // What Beast does not count counts here.
  if (taken_ + (parser_->is_done() ? 0 : buffer.size()) > kMostRequestBytes)
    return parser_->is_header_done() ? Refuse(413, "the request is longer than 64 KiB")
                                     : Refuse(431, "the request's header is too long");
  if (parser_->is_done()) return Finish();
  if (taken_ == 0 && buffer.size() > kMostTargetBytes + 32 && buffer.find('\n') > kMostTargetBytes + 32)
    return Refuse(414, "the address is too long");
  return State::kMore;
}

bool HttpRequestReader::WantsContinue() {
  if (continueAsked_ || !parser_->is_header_done() || parser_->is_done()) return false;
  continueAsked_ = true;
  return parser_->get().version() >= 11 && Lower(parser_->get()[http::field::expect]) == "100-continue";
}

HttpRequestReader::State HttpRequestReader::Finish() {
  auto& message = parser_->get();
  request_.method = message.method_string();
  Result<HttpTarget> target = ReadHttpTarget(message.target());
  if (!target) return Refuse(400, target.Reason());
  request_.path = std::move(target.Value().path);
  request_.query = std::move(target.Value().query);
  for (const auto& field : message) {
    if (request_.headers.size() == kMostHeaderFields) return Refuse(431, "the request has too many fields");
    request_.headers.emplace_back(Lower(field.name_string()), field.value());
  }
  const auto hosts = message.count(http::field::host);
  if (hosts > 1 || (hosts == 0 && message.version() >= 11))
    return Refuse(400, "the request must name one Host");
  request_.keepAlive = message.keep_alive();
  request_.body = std::move(message.body());
  return State::kDone;
}

HttpRequest HttpRequestReader::TakeRequest() {
  return std::move(request_);
}

std::string WriteHttpAnswer(const HttpAnswer& answer, bool keepAlive, AnswerBody body) {
  http::response<http::empty_body> message;
  message.version(11);
  message.result(static_cast<unsigned>(answer.status));
  if (!answer.type.empty()) message.set(http::field::content_type, answer.type);
  message.set(http::field::cache_control, "no-store");
  message.set("Content-Security-Policy", kContentPolicy);
  message.set("X-Content-Type-Options", "nosniff");
  message.set("X-Frame-Options", "DENY");
  message.set("Referrer-Policy", "no-referrer");
  message.set("Cross-Origin-Opener-Policy", "same-origin");
  message.set("Cross-Origin-Resource-Policy", "same-origin");
  for (const auto& [name, value] : answer.headers)
    if (IsPlain(name) && IsPlain(value)) message.set(name, value);
  if (body != AnswerBody::kEndless && answer.status != 204 && answer.status != 304)
    message.content_length(answer.body.size());
  message.keep_alive(keepAlive && body != AnswerBody::kEndless);
  std::string bytes = HeaderBytes(message);
  if (body == AnswerBody::kSent && answer.status != 204 && answer.status != 304) bytes += answer.body;
  return bytes;
}

std::string WriteHttpRequest(std::string_view method, std::string_view target, std::string_view body) {
  http::request<http::empty_body> message;
  message.version(11);
  message.method_string({method.data(), method.size()});
  message.target({target.data(), target.size()});
  message.set(http::field::host, "localhost");
  if (!body.empty()) message.set(http::field::content_type, "application/json");
  if (!body.empty() || method == "POST") message.content_length(body.size());
  return HeaderBytes(message).append(body);
}

struct HttpAnswerReader::Parser : http::response_parser<http::string_body> {};

HttpAnswerReader::HttpAnswerReader(std::optional<std::size_t> mostBytes)
    : parser_(std::make_unique<Parser>()) {
  parser_->eager(true);
  parser_->header_limit(kMostRequestBytes);
  if (mostBytes)
    parser_->body_limit(*mostBytes);
  else
    parser_->body_limit(boost::none);
}
HttpAnswerReader::~HttpAnswerReader() = default;

Outcome HttpAnswerReader::Take(std::string_view bytes) {
  buffer_ += bytes;
  boost::beast::error_code error;
  while (!buffer_.empty() && !parser_->is_done()) {
    const std::size_t used = parser_->put(asio::buffer(buffer_), error);
    buffer_.erase(0, used);
    if (error == http::error::need_more) return {};
    if (error) return Failure{"the answer cannot be read: " + error.message()};
    if (used == 0) return {};
  }
  return {};
}

Outcome HttpAnswerReader::TakeEnd() {
  boost::beast::error_code error;
  if (parser_->got_some() && !parser_->is_done()) parser_->put_eof(error);
  if (error || !parser_->is_done()) return Failure{"the answer ended before it was whole"};
  return {};
}

bool HttpAnswerReader::HasStatus() const {
  return parser_->is_header_done();
}

bool HttpAnswerReader::Done() const {
  return parser_->is_done();
}

int HttpAnswerReader::Status() const {
  return static_cast<int>(parser_->get().result_int());
}

std::string HttpAnswerReader::Header(std::string_view name) const {
  return std::string(parser_->get()[boost::beast::string_view(name.data(), name.size())]);
}

std::string HttpAnswerReader::TakeBody() {
  return std::exchange(parser_->get().body(), {});
}

}  // namespace zeb
