// CurlFtpSession: an FtpSession on libcurl. One easy handle keeps one connection for all operations.
//
// libcurl drops the connection when a command is refused, unless the command is marked as one that may fail;
// so all are, and what the server thinks of them is read from its replies.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

#include "platform/FtpSession.h"

namespace zeb {

class CurlFtpSession : public FtpSession {
 public:
  CurlFtpSession() = default;
  ~CurlFtpSession() override;

  Outcome Open() override;
  Outcome Connect(const FtpTarget& target) override;
  bool Connected() const override { return connected_; }
  Outcome Probe() override;
  Outcome Upload(const std::string& path, const FtpSource& source) override;
  Result<bool> Exists(const std::string& path) override;
  Outcome Rename(const std::string& from, const std::string& to) override;
  Outcome Delete(const std::string& path) override;
  Result<std::string> Download(const std::string& path, std::size_t limit) override;
  std::string LastResponse() const override { return lastResponse_; }
  void Close() override;
  void Cancel() override;

 private:
  using Clock = std::chrono::steady_clock;

  Outcome Begin(const std::string& path);
  void SetUp(const std::string& path);
  Outcome Perform(const std::string& what);
  Outcome Command(const std::string& command, const std::string& what);
  Result<bool> ListHas(const std::string& path);
  bool Patient() const;
  int ReplyCode() const;
  bool TakeReplyLine(std::string_view line);

  void* handle_ = nullptr;
  void* url_ = nullptr;
  bool connected_ = false;
  bool binary_ = false;        // sizes are told in binary mode only
  bool noDescriptor_ = false;  // the last operation found none for its connection
  bool isAnew_ = false;        // the last operation had to make a connection
  FtpTarget target_;
  std::string reply_, lastResponse_;        // the reply that is arriving; the last complete one
  std::size_t replyBytes_ = 0;              // of one operation
  Clock::time_point begun_;                 // the operation
  std::atomic<Clock::rep> cancelledAt_{0};  // 0: it is not

  friend struct CurlCallbacks;
};

class CurlFtpSessions : public FtpSessions {
 public:
  CurlFtpSessions();
  std::unique_ptr<FtpSession> Make() override { return std::make_unique<CurlFtpSession>(); }
};

}  // namespace zeb
