// WinInetFtpSession: an FtpSession on the system's own FTP (WinINet), without TLS.
//
// WinINet's calls block for as long as they like, so they are made through FtpCalls: the limits hold whatever
// a server does. A call that is late costs the connection.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/FtpSession.h"
#include "platform/windows/FtpCalls.h"

namespace zeb {

// The last whole reply in what the server said, without its line end; a reply of many lines with all of them.
std::string_view LastFtpReply(std::string_view words);

class WinInetFtpSession : public FtpSession {
 public:
  WinInetFtpSession() = default;
  ~WinInetFtpSession() override;

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
  using Clock = FtpCalls::Clock;
  using Handle = void*;  // WinINet's
  struct Answer;
  using Call = std::function<bool(Answer&)>;

  void ForgetWords();
  Outcome Begin(const std::string& path);
  Clock::time_point Deadline() const;
  Answer Ask(Call call);
  Answer Command(const std::string& command);
  Failure Failed(const std::string& what, const Answer& answer);
  Outcome Done(const std::string& what, const Answer& answer);
  Answer OpenFile(const std::string& path, bool toWrite);
  Answer CloseFile(Handle file);
  Outcome Send(Handle file, const FtpSource& source, const std::string& what);
  Outcome CheckUploaded(const std::string& path, std::uint64_t size, const std::string& what);
  Result<bool> ListHas(const std::string& path, const std::string& what);
  void DropHandles();
  int ReplyCode() const;

  FtpCalls calls_;
  FtpTarget target_;
  Handle internet_ = nullptr, connection_ = nullptr;
  bool connected_ = false;
  bool binary_ = false;  // sizes are told in binary mode only
  std::string lastResponse_;
  Clock::time_point begun_, operationEnd_;  // of the operation
  Clock::time_point callBegun_;             // in it
  std::atomic<Clock::rep> cancelledAt_{0};  // 0: it is not
};

}  // namespace zeb
