#include "outputs/http/HttpFetch.h"

#include <memory>
#include <utility>

#include "platform/Tcp.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr int kMostRedirections = 3;

// What the socket and the task that waits share; the socket may outlive the task by a moment.
struct Conversation {
  std::function<bool(std::string_view)> take;
  bool enough = false;
  bool over = false;  // the task is gone
};

bool IsRedirection(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

std::string RequestFor(const HttpAddress& address, const std::string& json) {
  std::string request = json.empty() ? "GET " : "POST ";
  request += address.path + " HTTP/1.1\r\nHost: " + address.Host() +
             "\r\nUser-Agent: ZEB/" ZEB_VERSION
             "\r\nAccept: */*\r\nAccept-Encoding: identity\r\nCache-Control: no-cache\r\n";
  if (!json.empty())
    request += "Content-Type: application/json\r\nContent-Length: " + std::to_string(json.size()) + "\r\n";
  return request + "Connection: close\r\n\r\n" + json;
}

// Where an answer sends its reader; "" for one that stays.
std::string RedirectionOf(const HttpAnswer& answer, const HttpAddress& from) {
  if (!IsRedirection(answer.Status())) return {};
  std::string to = answer.Header("Location");
  if (to.rfind('/', 0) != 0 || to.rfind("//", 0) == 0) return to;
  return (from.target.tls ? "https://" : "http://") + from.Host() + to;
}

}  // namespace

CallResult Call(Environment& environment, const RequestTarget& target, std::string_view request,
                Duration limit, const Epoch::Mark& mine, std::function<bool(std::string_view bytes)> take) {
  EventLoop& loop = environment.loop;
  const MonotonicTime end = loop.Monotonic() + limit;
  const std::shared_ptr<TcpClientControl> client = environment.network.MakeClient();
  const auto talk = std::make_shared<Conversation>();
  talk->take = std::move(take);
  client->onData = [talk](std::string_view bytes) {
    if (!talk->enough && !talk->over) talk->enough = talk->take(bytes);
  };
  using Client = TcpClientControl;
  std::string host = target.host;
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
  const auto port = static_cast<std::uint16_t>(target.port);
  if (target.tls)
    client->ConnectTls(host, port);
  else
    client->Connect(host, port);
  const auto state = [&client] { return client->CurrentState(); };
  const auto settled = [&] {
    return !mine.Holds() || state() == Client::kConnected || state() == Client::kError ||
           state() == Client::kClosed;
  };
  loop.WaitUntil(settled, limit);
  CallResult result;
  if (mine.Holds() && state() == Client::kConnected) {
    client->SendData(request);
    loop.WaitUntil([&] { return !mine.Holds() || talk->enough || state() != Client::kConnected; },
                   end - loop.Monotonic());
    result.end = talk->enough                    ? CallEnd::kEnough
                 : state() != Client::kConnected ? CallEnd::kClosed
                                                 : CallEnd::kTimeOver;
  } else {
    result.problem = WhyNotConnected(*client, target);
  }
  talk->over = true;
  return result;
}

Result<HttpAnswer> Fetch(Environment& environment, const HttpOrder& order, const Epoch::Mark& mine) {
  const MonotonicTime end = environment.loop.Monotonic() + order.limit;
  std::string url = order.url;
  const auto fails = [&url](const std::string& why) { return Failure{"'" + url + "': " + why}; };
  for (int redirections = 0;; ++redirections) {
    const Result<HttpAddress> address = ParseHttpAddress(url);
    if (!address) return address.AsFailure();
    HttpAnswer answer(order.mostBytes);
    const CallResult call = Call(environment, address.Value().target, RequestFor(address.Value(), order.json),
                                 end - environment.loop.Monotonic(), mine, [&answer](std::string_view bytes) {
                                   answer.Take(bytes);
                                   return answer.Ended();
                                 });
    if (!mine.Holds()) return Failure{"given up"};
    if (call.end == CallEnd::kNoConnection) return fails(call.problem);
    if (call.end == CallEnd::kTimeOver) return fails("the server does not answer in time");
    if (call.end == CallEnd::kClosed) answer.TakeEnd();
    if (!answer.Problem().empty()) return fails("the server " + answer.Problem());
    const std::string next = RedirectionOf(answer, address.Value());
    if (next.empty() || !order.json.empty()) return answer;
    if (redirections == kMostRedirections) return fails("the server redirects again and again");
    url = next;
  }
}

}  // namespace zeb
