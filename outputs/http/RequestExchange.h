// One request over a client control that is borrowed from the service's window, for the outputs that speak
// HTTP: close what is open, connect, send, give the server a second, close.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Epoch.h"
#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

inline constexpr Duration kRequestPause = std::chrono::milliseconds(500);  // between requests of one update
inline constexpr Duration kSocketLimit = std::chrono::seconds(10);         // for connecting, and for closing
inline constexpr Duration kAnswerTime = std::chrono::seconds(1);
// More of an answer ends the connection: nothing needs it, and a stream without an end must not keep us busy.
inline constexpr std::size_t kMaxReplyBytes = 64u * 1024;

struct RequestTarget {
  std::string host;  // a name or an address; an IPv6 address with or without its brackets
  std::int32_t port = 80;
  bool tls = false;
};

// What became of a request.
struct Verdict {
  std::string problem;  // one line that names the server; "": it was taken
  bool mayPass = true;  // whether sending it again makes sense
};

// Whether a server that answered with this status may take the same request later.
constexpr bool StatusMayPass(int code) {
  return code == 408 || code == 429 || code >= 500;
}

struct ExchangeResult {
  enum End { kSent, kNotClosed, kNotConnected };
  End end = kSent;
  std::string problem;          // one line that names the server; empty when the request was sent
  std::string reply;            // the first kMaxReplyBytes of it
  bool connectionLost = false;  // the server closed before the second was over

  std::string StatusLine() const;  // the reply's first line
  int StatusCode() const;          // 0 when it is no HTTP status line
};

// Tasks only. A connection that is refused is not waited for any longer. Comes back at once when `mine` ends,
// and then the result means nothing.
ExchangeResult SendRequest(EventLoop& loop, TcpClientControl& control, const RequestTarget& target,
                           std::string_view request, const Epoch::Mark& mine);

// Parts of a "####" list: one leading separator is dropped, every other piece counts, empty ones too.
std::vector<std::string> SplitPieces(std::string_view text);

// "name:port" as it is written in messages and in a Host line: IPv6 addresses in brackets.
std::string HostForHeader(const std::string& host);
std::string ServerText(const RequestTarget& target);
// Why an attempt to connect has come to nothing in its time.
std::string WhyNotConnected(const TcpClientControl& control, const RequestTarget& target);
// For a request's line, of bytes in any character set: what would end the line, and so begin a header of
// somebody else's, is percent-encoded, as are all control characters.
std::string ControlsEncoded(std::string_view bytes);

}  // namespace zeb
