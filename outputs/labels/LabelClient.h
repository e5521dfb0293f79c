// LabelClient: the DAB client control over the label server's line protocol (docs/manual/label-server.md).
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/DABClientControl.h"
#include "platform/Tcp.h"
#include "text/LineSplitter.h"

namespace zeb {

class LabelClient : public DABClientControl {
 public:
  explicit LabelClient(Network& network) : network_(network) {}

  std::int32_t CurrentState() const override;
  bool Connect(const std::string& server, std::uint16_t port) override;
  void LogOn(const std::string& service, const std::string& password) override;
  void SendLabel(const std::string& label) override;
  std::size_t UnansweredLabels() const override { return unanswered_; }
  void Close() override;
  std::string LastError() const override { return error_; }
  std::string Server() const override { return socket_ ? server_ : ""; }
  std::uint16_t Port() const override { return socket_ ? port_ : std::uint16_t{0}; }
  std::string Service() const override { return phase_ == Phase::kLoggedOn ? service_ : ""; }

 private:
  enum class Phase { kLink, kLoggingOn, kLoggedOn };
  void OnData(std::string_view bytes);
  void OnReply(std::string_view line);
  void LeaveSocket();
  // Ends the connection for a reason of its own or of the server's; `Lose` also reports it.
  void Drop(std::string reason);
  void Lose(std::string reason);

  static constexpr std::size_t kMaxReplyBytes = 4096;

  Network& network_;
  std::shared_ptr<TcpClientControl> socket_;
  Phase phase_ = Phase::kLink;
  std::string server_, service_, error_;
  std::uint16_t port_ = 0;
  LineSplitter replies_{kMaxReplyBytes};
  std::size_t unanswered_ = 0;
};

}  // namespace zeb
