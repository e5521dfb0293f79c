#include "outputs/encoder/IcecastWatch.h"

#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/PercentEncoding.h"

namespace zeb {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kAddress = "\"listenurl\":\"";
constexpr std::string_view kBeginning = "\"stream_start_iso8601\":\"";

std::string_view UntilQuote(std::string_view text) {
  return text.substr(0, text.find('"'));
}

}  // namespace

// One period of watching. Lives while a task asks for it.
struct IcecastWatch::Asking {
  EventLoop& loop;
  std::shared_ptr<TcpClientControl> client;
  RequestTarget target;
  std::string mount;
  Duration interval;
  std::function<void()> forgotten;
  Epoch::Mark mark;
  std::string beginning;  // as last seen; "" before the first
  Timer next;
};

std::string StatusPageRequest(const RequestTarget& target, const std::string& mount) {
  return "GET /status-json.xsl?mount=" + PercentEncoded(mount) + " HTTP/1.1\r\nHost: " + ServerText(target) +
         "\r\nConnection: close\r\n\r\n";
}

std::string StreamBeginning(std::string_view statusPage, std::string_view mount) {
  for (std::size_t at = statusPage.find(kAddress); at != kNone;) {
    const std::string_view rest = statusPage.substr(at + kAddress.size());
    at = statusPage.find(kAddress, at + 1);
    if (!UntilQuote(rest).ends_with(mount)) continue;
    const std::string_view source = rest.substr(0, rest.find(kAddress));
    const std::size_t beginning = source.find(kBeginning);
    if (beginning == kNone) return {};
    return std::string(UntilQuote(source.substr(beginning + kBeginning.size())));
  }
  return {};
}

void IcecastWatch::Begin(RequestTarget target, std::string mount, Duration interval,
                         std::function<void()> forgotten) {
  Stop();
  asking_ = std::make_shared<Asking>(Asking{environment_.loop,
                                            environment_.network.MakeClient(),
                                            std::move(target),
                                            std::move(mount),
                                            interval,
                                            std::move(forgotten),
                                            epoch_.Now(),
                                            {},
                                            {}});
  Ask(asking_);
}

void IcecastWatch::Stop() {
  epoch_.Next();
  if (asking_) asking_->next.Stop();
  asking_.reset();
}

void IcecastWatch::Ask(const std::shared_ptr<Asking>& asking) {
  asking->loop.Start("looking at a stream", [asking] {
    const ExchangeResult answer = SendRequest(asking->loop, *asking->client, asking->target,
                                              StatusPageRequest(asking->target, asking->mount), asking->mark);
    if (!asking->mark.Holds()) return;
    std::string beginning = StreamBeginning(answer.reply, asking->mount);
    if (!beginning.empty()) {
      const std::string before = std::exchange(asking->beginning, std::move(beginning));
      if (!before.empty() && before != asking->beginning) {
        DebugLine("Encoder: the stream ", asking->mount, " began anew");
        asking->forgotten();
      }
    }
    if (!asking->mark.Holds()) return;
    asking->next = asking->loop.After(asking->interval, [weak = std::weak_ptr<Asking>(asking)] {
      if (const auto self = weak.lock()) Ask(self);
    });
  });
}

}  // namespace zeb
