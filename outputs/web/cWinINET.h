// cWinINET: transfers of whole files to and from an FTP server, with result codes and their texts, and URL
// coding. The transfers block: they run on a worker thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/FileSystem.h"
#include "platform/FtpSession.h"
#include "text/PercentEncoding.h"

namespace zeb {

class cWinINET {
 public:
  enum UploadResult : std::int32_t {
    kUploadSuccessful = 0,
    kNoInternetConnection = 1,
    kUnableToConnect = 2,
    kUnableToWrite = 3,
    kUnableToRead = 4,
    kCancelled = 5
  };
  // Both may be empty, and are called on the thread that uploads.
  struct Watch {
    std::function<void(int percent)> percent;  // whole ones, each once
    std::function<bool()> cancelled;           // asked before each block
  };

  explicit cWinINET(FileSystem& files) : files_(files) {}

  // Over a session that is connected. The file is sent block by block, whatever its size. With
  // `throughTempName` it goes under another name of its folder and is then put in place; when that fails, the
  // server's previous file stays.
  std::int32_t UploadFile(FtpSession& session, const std::string& local, std::string serverPath,
                          bool throughTempName, const Watch& watch = {});
  // The same from a file that is open, from its beginning; `local` is its name for reasons.
  std::int32_t UploadFile(FtpSession& session, FileReader& file, const std::string& local,
                          std::string serverPath, bool throughTempName, const Watch& watch = {});
  // Over a session of its own.
  std::int32_t UploadFile(FtpSessions& sessions, const FtpTarget& target, const std::string& local,
                          const std::string& serverPath, bool throughTempName, const Watch& watch = {});
  // Why the last upload failed, in one line: the server's words, or what went wrong here.
  const std::string& Problem() const { return problem_; }

  Outcome DownloadFile(FtpSession& session, const std::string& serverPath, const std::string& local);

  // Whether the computer answers an echo request; `ping` is the platform's (platform/system/Ping.h).
  using Ping = std::function<bool(const std::string& host)>;
  static bool PingComputer(const std::string& host, const Ping& ping) { return ping && ping(host); }

  static std::string GetUploadResultDescription(std::int32_t code);
  static std::string GetLastInternetResponse(const FtpSession& session) { return session.LastResponse(); }

  static std::string URLEncode(std::string_view text) { return UrlEncode(text); }
  static std::string URLEncode2(std::string_view text) { return UrlEncode(text); }
  static std::string URLEncodeB2(std::string_view text) { return UrlEncode(text); }
  static std::string URLDecode2(std::string_view text) { return UrlDecode(text); }
  static std::string URLDecodeB2(std::string_view text) { return UrlDecode(text); }

 private:
  std::int32_t Begin(FtpSession& session, const std::string& serverPath);
  std::int32_t Fail(UploadResult result, std::string why);
  std::int32_t Send(FtpSession& session, FileReader& file, const std::string& name, const Watch& watch);
  std::int32_t PutInPlace(FtpSession& session, const std::string& temp, const std::string& target);

  FileSystem& files_;
  std::string problem_;
};

// Why an operation of a session failed: the server's own words, else ours. A reply that agrees to
// something does not tell why it failed.
std::string WhyFtpFailed(const FtpSession& session, const std::string& reason);
// Why a local file is not sent.
std::string WhyFileUnreadable(const std::string& reason);

// A download is held in memory.
inline constexpr std::uint64_t kMaxDownloadBytes = 64u * 1024 * 1024;

}  // namespace zeb
