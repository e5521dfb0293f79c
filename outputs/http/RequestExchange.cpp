#include "outputs/http/RequestExchange.h"

#include <algorithm>
#include <memory>

#include "text/Encodings.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/PercentEncoding.h"

namespace zeb {
namespace {

constexpr std::string_view kSeparator = "####";

// Collects the reply while it lives. The callback shares the text, since the control outlives the exchange.
class ReplyReader {
 public:
  explicit ReplyReader(TcpClientControl& control) : control_(control) {
    control_.onData = [reply = reply_, &control](std::string_view bytes) {
      reply->append(bytes.substr(0, kMaxReplyBytes - reply->size()));
      if (reply->size() >= kMaxReplyBytes) control.Close();
    };
  }
  ~ReplyReader() { control_.onData = nullptr; }
  ReplyReader(const ReplyReader&) = delete;
  ReplyReader& operator=(const ReplyReader&) = delete;

  const std::string& Reply() const { return *reply_; }

 private:
  TcpClientControl& control_;
  std::shared_ptr<std::string> reply_ = std::make_shared<std::string>();
};

// What is neither open nor closed (an attempt that hangs, an error) must be closed as well before the control
// can be used again.
bool CloseAndWait(EventLoop& loop, TcpClientControl& control, const Epoch::Mark& mine) {
  const auto closed = [&control] { return control.CurrentState() == TcpClientControl::kClosed; };
  if (closed()) return true;
  control.Close();
  loop.WaitUntil([&] { return closed() || !mine.Holds(); }, kSocketLimit);
  return closed();
}

bool ConnectAndWait(EventLoop& loop, TcpClientControl& control, const RequestTarget& target,
                    const Epoch::Mark& mine) {
  std::string host = target.host;
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
  const auto port = static_cast<std::uint16_t>(target.port);
  if (target.tls)
    control.ConnectTls(host, port);
  else
    control.Connect(host, port);
  loop.WaitUntil(
      [&] {
        const TcpClientControl::State state = control.CurrentState();
        return !mine.Holds() || state == TcpClientControl::kConnected || state == TcpClientControl::kError ||
               state == TcpClientControl::kClosed;
      },
      kSocketLimit);
  return control.CurrentState() == TcpClientControl::kConnected;
}

ExchangeResult Failed(ExchangeResult::End end, std::string problem) {
  ExchangeResult result;
  result.end = end;
  result.problem = std::move(problem);
  return result;
}

}  // namespace

std::string ExchangeResult::StatusLine() const {
  std::string_view rest = reply;
  return DecodeLenient(TakeLine(rest));
}

int ExchangeResult::StatusCode() const {
  const std::string line = StatusLine();
  const std::size_t blank = line.find(' ');
  // "ICY 200 OK" is how streaming servers have always put it.
  if (blank == std::string::npos || (line.rfind("HTTP/", 0) != 0 && line.rfind("ICY ", 0) != 0)) return 0;
  return LeadingDigits(std::string_view(line).substr(blank + 1));
}

ExchangeResult SendRequest(EventLoop& loop, TcpClientControl& control, const RequestTarget& target,
                           std::string_view request, const Epoch::Mark& mine) {
  if (!CloseAndWait(loop, control, mine))
    return Failed(ExchangeResult::kNotClosed, "the last connection to " + ServerText(target) +
                                                  " does not close; the server takes no bytes");
  if (target.port < 1 || target.port > 65535)
    return Failed(ExchangeResult::kNotConnected, "there is no port " + std::to_string(target.port) +
                                                     " to reach '" + target.host + "' on; set 1 to 65535");
  if (!ConnectAndWait(loop, control, target, mine))
    return Failed(ExchangeResult::kNotConnected, WhyNotConnected(control, target));
  ExchangeResult result;
  {
    const ReplyReader reader(control);
    control.SendData(request);
    loop.WaitUntil([&] { return !mine.Holds(); }, kAnswerTime);
    result.reply = reader.Reply();
    result.connectionLost = control.CurrentState() != TcpClientControl::kConnected;
  }
  if (mine.Holds()) CloseAndWait(loop, control, mine);
  return result;
}

std::vector<std::string> SplitPieces(std::string_view text) {
  if (text.substr(0, kSeparator.size()) == kSeparator) text.remove_prefix(kSeparator.size());
  const std::vector<std::string_view> pieces = SplitAt(text, kSeparator);
  return {pieces.begin(), pieces.end()};
}

std::string HostForHeader(const std::string& host) {
  const std::string clean = WithoutControls(host);
  return clean.find(':') != std::string::npos && clean.front() != '[' ? "[" + clean + "]" : clean;
}

std::string ServerText(const RequestTarget& target) {
  return HostForHeader(target.host) + ":" + std::to_string(target.port);
}

std::string WhyNotConnected(const TcpClientControl& control, const RequestTarget& target) {
  if (std::string why = control.LastError(); !why.empty()) return why;
  if (control.CurrentState() == TcpClientControl::kResolving)
    return "the look-up of '" + target.host + "' is not answered; check this machine's name server";
  return ServerText(target) + " does not answer";
}

std::string ControlsEncoded(std::string_view bytes) {
  std::string line;
  for (const char c : bytes) {
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (control)
      line += PercentEncoded(std::string_view(&c, 1));
    else
      line += c;
  }
  return line;
}

}  // namespace zeb
