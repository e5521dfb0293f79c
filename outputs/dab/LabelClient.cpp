#include "outputs/dab/LabelClient.h"

#include <utility>

#include "text/Encodings.h"
#include "text/HexEscapes.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

constexpr std::size_t kMaxReplyBytes = 4096;
// A server that takes labels and never says anything is no label server.
constexpr int kMaxUnanswered = 16;
constexpr std::size_t kMaxReasonCharacters = 200;

std::string Readable(std::string_view reply) {
  std::string text = DecodeLenient(reply);
  text.resize(FirstCharacters(text, kMaxReasonCharacters).size());
  for (char& c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  return text;
}

}  // namespace

std::int32_t LabelClient::CurrentState() const {
  if (!socket_) return kClosed;
  switch (socket_->CurrentState()) {
    case TcpClientControl::kConnecting:
      return kConnecting;
    case TcpClientControl::kClosing:
      return kClosing;
    case TcpClientControl::kConnected:
      if (phase_ == Phase::kLink) return kConnected;
      return phase_ == Phase::kLoggingOn ? kLoggingOn : kLoggedOn;
    default:
      return kClosed;  // also while the name is looked up: no connection has begun yet
  }
}

bool LabelClient::Connect(const std::string& server, std::uint16_t port) {
  const bool underWay = socket_ && socket_->CurrentState() == TcpClientControl::kResolving &&
                        server_ == server && port_ == port;
  if (underWay) return true;
  socket_.reset();
  phase_ = Phase::kLink;
  begun_.clear();
  unanswered_ = 0;
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
    Drop(why.empty() ? server_ + " closed the connection" : why);
  };
  socket_->Connect(server, port);
  return true;
}

void LabelClient::LogOn(const std::string& service, const std::string& password) {
  if (CurrentState() != kConnected) return;
  service_ = service;
  phase_ = Phase::kLoggingOn;
  socket_->SendData("LOGON SERVICE=\"" + EscapeValue(service) + "\" PASSWORD=\"" + EscapeValue(password) +
                    "\"\r\n");
}

void LabelClient::SendLabel(const std::string& label) {
  if (CurrentState() != kLoggedOn) return;
  if (unanswered_ >= kMaxUnanswered) return Drop(server_ + " does not answer");
  ++unanswered_;
  socket_->SendData("LABEL TEXT=\"" + EscapeValue(label) + "\"\r\n");
}

void LabelClient::Close() {
  if (!socket_) return;
  if (CurrentState() == kLoggedOn) socket_->SendData("LOGOFF\r\n");
  phase_ = Phase::kLink;
  error_.clear();
  socket_->onData = nullptr;
  socket_->onClosed = nullptr;
  socket_->Close();
}

// The socket may be the caller, so it stays until the next connection takes its place.
void LabelClient::Drop(std::string reason) {
  const auto socket = socket_;
  phase_ = Phase::kLink;
  error_ = std::move(reason);
  if (!socket) return;
  socket->onData = nullptr;
  socket->onClosed = nullptr;
  socket->Close();
}

void LabelClient::OnData(std::string_view bytes) {
  const auto socket = socket_;  // alive while its bytes are read
  while (true) {
    const std::size_t end = bytes.find('\n');
    begun_.append(bytes.substr(0, end));
    if (begun_.size() > kMaxReplyBytes) return Drop(server_ + " does not speak the label protocol");
    if (end == std::string_view::npos) return;
    bytes.remove_prefix(end + 1);
    std::string line = std::exchange(begun_, {});
    if (!line.empty() && line.back() == '\r') line.pop_back();
    OnReply(line);
    if (socket != socket_ || socket->CurrentState() != TcpClientControl::kConnected) return;
  }
}

void LabelClient::OnReply(std::string_view line) {
  const std::string_view word = line.substr(0, line.find(' '));
  const bool ok = EqualIgnoringAsciiCase(word, "OK");
  if (!ok && !EqualIgnoringAsciiCase(word, "ERROR"))
    return Drop(server_ + " does not speak the label protocol: '" + Readable(line) + "'");
  if (phase_ == Phase::kLoggingOn) {
    if (!ok) return Drop(server_ + " refused the log-on: " + Readable(TrimBlanks(line.substr(word.size()))));
    phase_ = Phase::kLoggedOn;
    error_.clear();
  } else if (phase_ == Phase::kLoggedOn) {
    if (unanswered_ > 0) --unanswered_;
    error_ = ok ? "" : server_ + " refused the label: " + Readable(TrimBlanks(line.substr(word.size())));
  }
}

}  // namespace zeb
