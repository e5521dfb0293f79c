// FtpSession: one connection to an FTP server, used for everything that an update does there.
//
// All calls block, each at most about the time limit of its target, and are made on a worker thread
// (EventLoop::RunBlocking), one at a time. Server paths are handed to the server as they are; one with a
// control character in it is refused. Reasons name the server or the path.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Result.h"

namespace zeb {

struct FtpTarget {
  std::string server;
  std::int32_t port = 21;
  std::string user, password;
  bool passive = true;
  bool tls = false;    // explicit TLS, certificates checked
  std::string caFile;  // trusted instead of the system's authorities; "" for those
  bool useProxy = false;
  std::string proxyName;
  std::int32_t proxyPort = 21;
  std::chrono::milliseconds timeLimit{30000};
};

// Told how many bytes were handed over after each block; false ends the upload.
using FtpProgress = std::function<bool(std::size_t sent)>;

inline constexpr std::size_t kFtpBlockBytes = 2048;
inline constexpr std::size_t kMaxFtpResponseCharacters = 1024;

class FtpSession {
 public:
  virtual ~FtpSession() = default;

  // What connecting needs of this machine; a failure means that there is no way to any network.
  virtual Outcome Open() = 0;
  // Connects and logs on; a connection that is open is closed first.
  virtual Outcome Connect(const FtpTarget& target) = 0;
  // False before Connect, after Close, and once an operation found the connection lost.
  virtual bool Connected() const = 0;
  virtual Outcome Upload(const std::string& path, std::string_view bytes, const FtpProgress& progress) = 0;
  virtual Result<bool> Exists(const std::string& path) = 0;
  virtual Outcome Rename(const std::string& from, const std::string& to) = 0;
  virtual Outcome Delete(const std::string& path) = 0;
  virtual Result<std::string> Download(const std::string& path, std::size_t limit) = 0;
  // The server's last reply, cut to kMaxFtpResponseCharacters; "" when it said nothing since Connect.
  virtual std::string LastResponse() const = 0;
  virtual void Close() = 0;
};

class FtpSessions {
 public:
  virtual ~FtpSessions() = default;
  virtual std::unique_ptr<FtpSession> Make() = 0;
};

}  // namespace zeb
