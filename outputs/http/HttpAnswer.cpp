#include "outputs/http/HttpAnswer.h"

#include <algorithm>
#include <charconv>

#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr std::size_t kMostHeadBytes = 64u * 1024;
constexpr std::string_view kHeadEnd = "\r\n\r\n", kLineEnd = "\r\n";

// The whole text as a number, or nothing.
std::optional<std::size_t> SizeOf(std::string_view text, int base) {
  std::size_t size = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return size;
}

}  // namespace

void HttpAnswer::Take(std::string_view bytes) {
  if (Ended()) return;
  // Twice, for what chunks have around them.
  bytes_ += bytes.substr(0, kMostHeadBytes + 2 * mostBytes_ - std::min(bytes_.size(), 2 * mostBytes_));
  if (!HasHead()) ReadHead();
  if (HasHead() && !Ended()) ReadBody();
}

void HttpAnswer::TakeEnd() {
  if (Ended()) return;
  if (!HasHead())
    problem_ = bytes_.empty() ? "closed the connection without an answer" : "did not answer in HTTP";
  else if (length_ || chunked_)
    problem_ = "closed the connection in the middle of its answer";
  else
    whole_ = true;
}

void HttpAnswer::ReadHead() {
  const std::size_t end = bytes_.find(kHeadEnd);
  if (end == std::string::npos) {
    if (bytes_.size() >= kMostHeadBytes) problem_ = "sends more than 64 KiB of headers";
    return;
  }
  bodyAt_ = chunkAt_ = end + kHeadEnd.size();
  if (Status() == 0) {
    problem_ = "did not answer in HTTP, but with '" + OneLine(StatusLine()) + "'";
    return;
  }
  if (Status() == 204 || Status() == 304) {  // which have no body
    length_ = 0;
    return;
  }
  chunked_ = LowerCase(Header("Transfer-Encoding")) == "chunked";
  const std::string length = Header("Content-Length");
  if (chunked_ || length.empty()) return;
  length_ = SizeOf(length, 10);
  if (!length_) problem_ = "announces an answer of '" + OneLine(length) + "' bytes";
}

void HttpAnswer::ReadBody() {
  if (chunked_) {
    whole_ = Unchunk();
  } else if (length_) {
    whole_ = bytes_.size() - bodyAt_ >= *length_;
  }
  const std::size_t expected = length_.value_or(0);
  if (expected > mostBytes_ || Body().size() > mostBytes_ || (!whole_ && bytes_.size() > 2 * mostBytes_))
    problem_ = "sends more than " + std::to_string(mostBytes_) + " bytes";
}

// True once the last chunk is there.
bool HttpAnswer::Unchunk() {
  for (;;) {
    const std::size_t line = bytes_.find(kLineEnd, chunkAt_);
    if (line == std::string::npos) return false;
    std::string_view size = std::string_view(bytes_).substr(chunkAt_, line - chunkAt_);
    size = TrimBlanks(size.substr(0, size.find(';')));
    const std::optional<std::size_t> length = SizeOf(size, 16);
    if (!length || *length > mostBytes_) {
      problem_ = length ? "sends more than " + std::to_string(mostBytes_) + " bytes"
                        : "announces a part of '" + OneLine(size) + "' bytes";
      return false;
    }
    if (*length == 0) return true;
    const std::size_t begin = line + kLineEnd.size();
    if (bytes_.size() < begin + *length + kLineEnd.size()) return false;
    unchunked_.append(bytes_, begin, *length);
    chunkAt_ = begin + *length + kLineEnd.size();
  }
}

std::string HttpAnswer::StatusLine() const {
  std::string_view rest = bytes_;
  return DecodeLenient(TakeLine(rest));
}

int HttpAnswer::Status() const {
  const std::string line = StatusLine();
  const std::size_t blank = line.find(' ');
  if (blank == std::string::npos || (line.rfind("HTTP/", 0) != 0 && line.rfind("ICY", 0) != 0)) return 0;
  return LeadingDigits(std::string_view(line).substr(blank + 1));
}

std::string HttpAnswer::Header(std::string_view name) const {
  std::string_view rest = std::string_view(bytes_).substr(0, bodyAt_);
  TakeLine(rest);
  while (!rest.empty()) {
    const std::string_view line = TakeLine(rest);
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos && EqualIgnoringCase(line.substr(0, colon), name))
      return DecodeLenient(TrimBlanks(line.substr(colon + 1)));
  }
  return {};
}

std::string_view HttpAnswer::Body() const {
  if (chunked_) return unchunked_;
  const std::string_view body = std::string_view(bytes_).substr(bodyAt_);
  return length_ ? body.substr(0, *length_) : body;
}

}  // namespace zeb
