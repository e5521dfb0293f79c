// LabelClient: the DAB client control over the label server's line protocol (docs/manual/label-server.md).
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/DABClientControl.h"
#include "platform/Tcp.h"

namespace zeb {

class LabelClient : public DABClientControl {
 public:
  explicit LabelClient(Network& network) : network_(network) {}

  std::int32_t CurrentState() const override;
  bool Connect(const std::string& server, std::uint16_t port) override;
  void LogOn(const std::string& service, const std::string& password) override;
  void SendLabel(const std::string& label) override;
  void Close() override;
  std::string LastError() const override { return error_; }
  std::string Server() const override { return socket_ ? server_ : ""; }
  std::uint16_t Port() const override { return socket_ ? port_ : std::uint16_t{0}; }
  std::string Service() const override { return phase_ == Phase::kLoggedOn ? service_ : ""; }

 private:
  enum class Phase { kLink, kLoggingOn, kLoggedOn };
  void OnData(std::string_view bytes);
  void OnReply(std::string_view line);
  void Drop(std::string reason);

  Network& network_;
  std::shared_ptr<TcpClientControl> socket_;
  Phase phase_ = Phase::kLink;
  std::string server_, service_, error_;
  std::uint16_t port_ = 0;
  std::string begun_;   // a reply whose line end has not come yet
  int unanswered_ = 0;  // labels
};

}  // namespace zeb
