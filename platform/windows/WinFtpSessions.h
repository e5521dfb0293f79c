// WinFtpSessions: the FTP of a program on Windows: the system's own for plain FTP, another kind where TLS is
// wanted.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "platform/FtpSession.h"
#include "platform/windows/WinInetFtp.h"

namespace zeb {

// Becomes the one or the other with Connect.
class WinFtpSession : public FtpSession {
 public:
  explicit WinFtpSession(FtpSessions& tls) : tls_(tls) {}

  Outcome Open() override { return Present().Open(); }
  Outcome Connect(const FtpTarget& target) override;
  bool Connected() const override { return Present().Connected(); }
  Outcome Probe() override { return Present().Probe(); }
  Outcome Upload(const std::string& path, const FtpSource& source) override {
    return Present().Upload(path, source);
  }
  Result<bool> Exists(const std::string& path) override { return Present().Exists(path); }
  Outcome Rename(const std::string& from, const std::string& to) override {
    return Present().Rename(from, to);
  }
  Outcome Delete(const std::string& path) override { return Present().Delete(path); }
  Result<std::string> Download(const std::string& path, std::size_t limit) override {
    return Present().Download(path, limit);
  }
  std::string LastResponse() const override { return Present().LastResponse(); }
  void Close() override { Present().Close(); }
  void Cancel() override;

 private:
  FtpSession& Present() const { return *present_; }
  FtpSessions& tls_;
  std::mutex mutex_;  // guards the choice and `cancelled_` against Cancel
  std::unique_ptr<FtpSession> present_ = std::make_unique<WinInetFtpSession>();
  bool hasTls_ = false, cancelled_ = false;
};

class WinFtpSessions : public FtpSessions {
 public:
  // `tls` makes the sessions with TLS, and outlives this.
  explicit WinFtpSessions(FtpSessions& tls) : tls_(tls) {}
  std::unique_ptr<FtpSession> Make() override { return std::make_unique<WinFtpSession>(tls_); }

 private:
  FtpSessions& tls_;
};

}  // namespace zeb
