// CurlFtpSession: an FtpSession on libcurl. One easy handle keeps one connection for all operations.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/FtpSession.h"

namespace zeb {

class CurlFtpSession : public FtpSession {
 public:
  CurlFtpSession() = default;
  ~CurlFtpSession() override;

  Outcome Open() override;
  Outcome Connect(const FtpTarget& target) override;
  bool Connected() const override { return connected_; }
  Outcome Upload(const std::string& path, std::string_view bytes, const FtpProgress& progress) override;
  Result<bool> Exists(const std::string& path) override;
  Outcome Rename(const std::string& from, const std::string& to) override;
  Outcome Delete(const std::string& path) override;
  Result<std::string> Download(const std::string& path, std::size_t limit) override;
  std::string LastResponse() const override { return lastResponse_; }
  void Close() override;

 private:
  void SetUp(const std::string& path);
  Outcome Commands(const std::vector<std::string>& commands, const std::string& what);
  Outcome Perform(const std::string& what);
  Outcome Refuse(const std::string& path) const;
  Result<bool> ListHas(const std::string& path);
  int ReplyCode() const;
  bool TakeReplyLine(std::string_view line);
  static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* self);

  void* handle_ = nullptr;
  bool connected_ = false;
  FtpTarget target_;
  std::string reply_, lastResponse_;  // the reply that is arriving; the last complete one
  std::size_t replyBytes_ = 0;        // of one operation
};

class CurlFtpSessions : public FtpSessions {
 public:
  CurlFtpSessions();
  std::unique_ptr<FtpSession> Make() override { return std::make_unique<CurlFtpSession>(); }
};

}  // namespace zeb
