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
  // Told whole percents, each once; false cancels.
  using Progress = std::function<bool(int percent)>;

  explicit cWinINET(FileSystem& files) : files_(files) {}

  // Over a session that is connected. With `throughTempName` the file is sent under another name of its
  // folder and then put in place; when that fails, the server's previous file stays.
  std::int32_t UploadFile(FtpSession& session, const std::string& local, std::string serverPath,
                          bool throughTempName, const Progress& progress = {});
  // Over a session of its own.
  std::int32_t UploadFile(FtpSessions& sessions, const FtpTarget& target, const std::string& local,
                          const std::string& serverPath, bool throughTempName, const Progress& progress = {});
  Outcome DownloadFile(FtpSession& session, const std::string& serverPath, const std::string& local);

  // Whether the computer answers an echo request; `ping` is the platform's (platform/posix/Ping.h).
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
  std::int32_t PutInPlace(FtpSession& session, const std::string& temp, const std::string& target);
  FileSystem& files_;
};

// More than any picture for a page.
inline constexpr std::uint64_t kMaxTransferBytes = 64u * 1024 * 1024;

}  // namespace zeb
