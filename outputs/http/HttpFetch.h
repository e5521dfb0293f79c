// HttpFetch: asks a web server for something, over a connection of its own that ends with the answer. For
// what an output shows to be looked at from outside, and for alarms.
//
// Tasks only. Each comes back at once when `mine` ends, and then the result means nothing.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "outputs/http/HttpAddress.h"
#include "outputs/http/HttpAnswer.h"
#include "platform/Environment.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"

namespace zeb {

// How a call has ended: its taker had enough, the peer closed, the time was over, or there was no connection.
enum class CallEnd { kEnough, kClosed, kTimeOver, kNoConnection };
struct CallResult {
  CallEnd end = CallEnd::kNoConnection;
  std::string problem;  // one line that names the server, when there was no connection
};

// Sends `request` and hands what arrives to `take`, until that says true for "enough". `limit` counts from
// the start, looking up the name and TLS included.
CallResult Call(Environment& environment, const RequestTarget& target, std::string_view request,
                Duration limit, const Epoch::Mark& mine, std::function<bool(std::string_view bytes)> take);

struct HttpOrder {
  std::string url;
  std::string json;  // to be posted; "": the address is fetched
  std::size_t mostBytes = 1024 * 1024;
  Duration limit = std::chrono::seconds(5);
};
// The answer, whatever its status is; redirections are followed as a browser does, a few of them. The reason
// names the address.
Result<HttpAnswer> Fetch(Environment& environment, const HttpOrder& order, const Epoch::Mark& mine);

}  // namespace zeb
