// FtpSession: one connection to an FTP server, used for everything that an update does there.
//
// All calls block, each at most about the time limit of its target (an upload also as long as it goes on),
// and are made on a worker thread (EventLoop::RunBlocking), one at a time; only Cancel comes from any thread.
// A refusal by the server leaves the connection as it is. Server paths are handed to the server as they are;
// one with a control character in it is refused. Reasons name the server or the path.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
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

  bool operator==(const FtpTarget&) const = default;
};

// What is uploaded: `size` bytes, asked for block after block until that many have come. Nothing ends the
// upload, which then fails.
struct FtpSource {
  std::uint64_t size = 0;
  std::function<std::optional<std::size_t>(char* to, std::size_t most)> read;
};

inline constexpr std::size_t kFtpBlockBytes = 2048;
inline constexpr std::size_t kMaxFtpResponseCharacters = 1024;
// How long whatever is under way gets to end properly once it is cancelled.
inline constexpr std::chrono::milliseconds kFtpCancelPatience{700};
// An upload may take this much longer than the time limit for each byte: the slowest line that is of use.
inline constexpr std::uint64_t kFtpSlowestBytesPerSecond = 1000;

class FtpSession {
 public:
  virtual ~FtpSession() = default;

  // What connecting needs of this machine; a failure means that there is no way to any network.
  virtual Outcome Open() = 0;
  // Connects and logs on; a connection that is open is closed first.
  virtual Outcome Connect(const FtpTarget& target) = 0;
  // False before Connect, after Close, and once an operation found the connection lost.
  virtual bool Connected() const = 0;
  // Asks the server for any answer at all: whether a connection that was left alone still stands.
  virtual Outcome Probe() = 0;
  // Replaces a file of that name. A failure part way may leave a part of it.
  virtual Outcome Upload(const std::string& path, const FtpSource& source) = 0;
  virtual Result<bool> Exists(const std::string& path) = 0;  // a file; folders do not count
  // Some servers put `from` in the place of a file `to`, others refuse.
  virtual Outcome Rename(const std::string& from, const std::string& to) = 0;
  virtual Outcome Delete(const std::string& path) = 0;
  virtual Result<std::string> Download(const std::string& path, std::size_t limit) = 0;
  // The server's last reply in the present operation, cut to kMaxFtpResponseCharacters; "" when it said
  // nothing in it.
  virtual std::string LastResponse() const = 0;
  virtual void Close() = 0;
  // An upload under way ends after its present block, so that the connection can still be used for tidying
  // up; whatever else waits for the server, now or later, gives up after kFtpCancelPatience.
  virtual void Cancel() = 0;
};

class FtpSessions {
 public:
  virtual ~FtpSessions() = default;
  virtual std::unique_ptr<FtpSession> Make() = 0;
};

}  // namespace zeb
