#include "outputs/labels/LabelClient.h"

#include <utility>

#include "outputs/labels/LabelWords.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

// A server that takes labels and never says anything is no label server.
constexpr std::size_t kMaxUnanswered = 16;

std::string Readable(std::string_view reply) {
  return OneLine(DecodeLenient(TrimBlanks(reply)));
}

}  // namespace

std::int32_t LabelClient::CurrentState() const {
  if (!socket_) return kClosed;
  switch (socket_->CurrentState()) {
    case TcpClientControl::kResolving:
    case TcpClientControl::kConnecting:
      return kConnecting;
    case TcpClientControl::kClosing:
      return kClosing;
    case TcpClientControl::kConnected:
      if (phase_ == Phase::kLink) return kConnected;
      return phase_ == Phase::kLoggingOn ? kLoggingOn : kLoggedOn;
    default:
      return kClosed;
  }
}

bool LabelClient::Connect(const std::string& server, std::uint16_t port) {
  LeaveSocket();
  socket_.reset();
  replies_.Reset();
  if (server.empty() || port == 0) {
    error_ = server.empty() ? "no label server is set" : "the label server's port is not from 1 to 65535";
    return false;
  }
  server_ = server;
  port_ = port;
  socket_ = network_.MakeClient();
  socket_->onData = [this](std::string_view bytes) { OnData(bytes); };
  socket_->onClosed = [this] {
    const std::string why = socket_->LastError();
    Lose(why.empty() ? server_ + " closed the connection" : why);
  };
  socket_->Connect(server, port);
  return true;
}

void LabelClient::LogOn(const std::string& service, const std::string& password) {
  if (CurrentState() != kConnected) return;
  service_ = service;
  phase_ = Phase::kLoggingOn;
  socket_->SendData(std::string(kLogOnCommand) + LabelParameter(kServiceParameter, service) +
                    LabelParameter(kPasswordParameter, password) + "\r\n");
}

void LabelClient::SendLabel(const std::string& label) {
  if (CurrentState() != kLoggedOn) return;
  if (unanswered_ >= kMaxUnanswered) return Drop(server_ + " does not answer");
  ++unanswered_;
  socket_->SendData(std::string(kLabelCommand) + LabelParameter(kTextParameter, label) + "\r\n");
}

void LabelClient::Close() {
  if (!socket_) return;
  if (CurrentState() == kLoggedOn) socket_->SendData(std::string(kLogOffCommand) + "\r\n");
  LeaveSocket();
  error_.clear();
  socket_->Close();
}

// Nothing more is taken from it. It may be the caller, so it stays until the next connection takes its place.
void LabelClient::LeaveSocket() {
  phase_ = Phase::kLink;
  unanswered_ = 0;
  if (!socket_) return;
  socket_->onData = nullptr;
  socket_->onClosed = nullptr;
}

void LabelClient::Drop(std::string reason) {
  const auto socket = socket_;
  LeaveSocket();
  error_ = std::move(reason);
  if (socket) socket->Close();
}

void LabelClient::Lose(std::string reason) {
  const bool wasLoggedOn = phase_ == Phase::kLoggedOn;
  Drop(std::move(reason));
  if (const auto tell = onLost; wasLoggedOn && tell) tell();
}

void LabelClient::OnData(std::string_view bytes) {
  const auto socket = socket_;  // alive while its bytes are read
  const bool readable = replies_.Feed(bytes, [this, &socket](std::string_view line) {
    OnReply(line);
    return socket == socket_ && socket->CurrentState() == TcpClientControl::kConnected;
  });
  if (!readable) Lose(server_ + " does not speak the label protocol");
}

void LabelClient::OnReply(std::string_view line) {
  const std::string_view word = FirstWord(line);
  const bool ok = EqualIgnoringAsciiCase(word, kOkAnswer);
  if (!ok && !EqualIgnoringAsciiCase(word, kErrorAnswer))
    return Lose(server_ + " does not speak the label protocol: '" + Readable(line) + "'");
  const std::string why = Readable(AfterFirstWord(line));
  if (phase_ == Phase::kLoggingOn) {
    if (!ok) return Drop(server_ + " refused the log-on: " + why);
    phase_ = Phase::kLoggedOn;
    error_.clear();
  } else if (phase_ == Phase::kLoggedOn) {
    if (unanswered_ > 0) --unanswered_;
    error_ = ok ? "" : server_ + " refused the label: " + why;
  }
}

}  // namespace zeb
