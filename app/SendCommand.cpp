#include "app/SendCommand.h"

#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "sources/uNetControlClient.h"

namespace zeb {
namespace {

using State = uNetControlClient::State;
using namespace std::chrono_literals;

constexpr Duration kConnectLimit = 20s;
constexpr Duration kLogOffLimit = 20s;
// How long the service may take no bytes before it counts as hung.
constexpr Duration kStallLimit = 60s;
constexpr Duration kNoLimit = std::chrono::hours(24 * 365 * 20);  // people type when they like
// More than this is not queued: the input waits for the service.
constexpr std::size_t kMaxUnsentBytes = 256 * 1024;

class Sending : public std::enable_shared_from_this<Sending> {
 public:
  Sending(EventLoop& loop, Network& network, SendOptions options, InputReader input, std::ostream& err,
          std::function<void(int)> finished)
      : loop_(loop),
        options_(std::move(options)),
        input_(std::move(input)),
        err_(err),
        finished_(std::move(finished)),
        client_(loop, network, MakeEvents()) {}

  void Start() {
    loop_.Start("send", [self = shared_from_this()] { self->Run(); });
  }

 private:
  uNetControlClient::Events MakeEvents() {
    uNetControlClient::Events events;
    events.ControlGranted = [this] { granted_ = true; };
    events.ControlRefused = [this](const std::string& controller) {
      Finish(2, "control is refused: '" + controller + "' has it");
    };
    events.ControlEnded = [this] {
      ended_ = true;
      if (!loggingOff_) Finish(1, "the service ended our control");
    };
    events.Disconnected = [this] {
      if (!ended_) Finish(1, Unreachable());
    };
    events.Message = [this](std::string_view line) { err_ << line << std::endl; };
    return events;
  }

  std::string Unreachable() const {
    const std::string where = options_.host + " port " + std::to_string(options_.port);
    const std::string why = client_.LastError();
    return (granted_ ? "the connection to " : "cannot connect to ") + where + (granted_ ? " broke" : "") +
           (why.empty() ? "" : ": " + why);
  }

  void Run() {
    client_.Connect(options_.host, options_.port, options_.name);
    loop_.WaitUntil([this] { return granted_ || done_; }, kConnectLimit);
    if (done_) return;
    if (!granted_) return Finish(1, Unreachable() + (client_.LastError().empty() ? ": no answer" : ""));
    if (options_.messages.empty()) SendInput();
    for (const std::string& message : options_.messages) SendLine(message);
    LogOff();
  }

  // A line is sent as soon as it is whole; the last one needs no line end.
  void SendInput() {
    std::string pending;
    while (!done_) {
      const auto read = loop_.RunBlocking(
          [input = input_] {
            std::string bytes;
            const bool more = input(bytes);
            return more ? std::optional(std::move(bytes)) : std::nullopt;
          },
          kNoLimit);
      if (!read || !*read) break;
      pending += **read;
      std::size_t start = 0;
      for (std::size_t end; (end = pending.find('\n', start)) != std::string::npos; start = end + 1)
        SendLine(std::string_view(pending).substr(start, end - start));
      pending.erase(0, start);
      if (pending.size() > kMaxMessageBytes) return Finish(1, "a line of the input is longer than 1 MiB");
    }
    if (!pending.empty()) SendLine(pending);
  }

  void SendLine(std::string_view line) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty() || done_) return;
    client_.Send(line);
    WaitUntilUnsentIsBelow(kMaxUnsentBytes);
  }

  // The limit starts again whenever the service has taken something.
  void WaitUntilUnsentIsBelow(std::size_t limit) {
    while (!done_ && client_.UnsentBytes() > limit) {
      const std::size_t before = client_.UnsentBytes();
      if (!loop_.WaitUntil([&] { return done_ || client_.UnsentBytes() < before; }, kStallLimit))
        Finish(1, "the service does not take what is sent");
    }
  }

  void LogOff() {
    WaitUntilUnsentIsBelow(0);
    if (done_) return;
    loggingOff_ = true;
    client_.LogOff();
    if (!loop_.WaitUntil([this] { return ended_ || done_; }, kLogOffLimit))
      return Finish(1, "the service did not confirm the log-off");
    Finish(0, "");
  }

  void Finish(int status, const std::string& reason) {
    if (done_) return;
    done_ = true;
    if (!reason.empty()) err_ << "zebctl: " << reason << std::endl;
    finished_(status);
  }

  EventLoop& loop_;
  const SendOptions options_;
  const InputReader input_;
  std::ostream& err_;
  const std::function<void(int)> finished_;
  bool granted_ = false, ended_ = false, loggingOff_ = false, done_ = false;
  uNetControlClient client_;
};

}  // namespace

void RunSendCommand(EventLoop& loop, Network& network, SendOptions options, InputReader input,
                    std::ostream& err, std::function<void(int status)> finished) {
  std::make_shared<Sending>(loop, network, std::move(options), std::move(input), err, std::move(finished))
      ->Start();
}

}  // namespace zeb
