#include "platform/posix/CurlFtpSession.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstring>

#include "text/Encodings.h"
#include "text/Numbers.h"
#include "text/Paths.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

// More than any server has to say; one that talks on for ever must not hold an update.
constexpr std::size_t kMaxReplyBytes = 64 * 1024;
constexpr std::size_t kMaxListBytes = 4u * 1024 * 1024;
// What a line must carry at least, for the time that a large picture may take.
constexpr std::size_t kSlowestBytesPerMillisecond = 1;

bool HasControlCharacter(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

std::string UrlOf(const FtpTarget& target, std::string_view path) {
  const bool ipv6 = target.server.find(':') != std::string::npos;
  std::string url =
      "ftp://" + (ipv6 ? "[" + target.server + "]" : target.server) + ":" + std::to_string(target.port) + "/";
  constexpr char kHex[] = "0123456789ABCDEF";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= 'a' && byte <= 'z') || std::strchr("/-_.~", c) != nullptr;
    if (plain) {
      url += c;
    } else {
      url += '%';
      url += kHex[byte >> 4];
      url += kHex[byte & 15];
    }
  }
  return url;
}

struct Source {
  std::string_view bytes;
  const FtpProgress* progress;
  std::size_t sent = 0;
};

std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* data) {
  auto& source = *static_cast<Source*>(data);
  if (source.sent > 0 && *source.progress && !(*source.progress)(source.sent)) return CURL_READFUNC_ABORT;
  const std::size_t block = std::min({size * count, kFtpBlockBytes, source.bytes.size() - source.sent});
  std::memcpy(buffer, source.bytes.data() + source.sent, block);
  source.sent += block;
  return block;
}

struct Sink {
  std::string bytes;
  std::size_t limit;
};

std::size_t OnWrite(char* data, std::size_t size, std::size_t count, void* to) {
  auto& sink = *static_cast<Sink*>(to);
  if (size * count > sink.limit - sink.bytes.size()) return 0;
  sink.bytes.append(data, size * count);
  return size * count;
}

// The server answered, and goes on listening.
bool StaysConnected(CURLcode code) {
  switch (code) {
    case CURLE_QUOTE_ERROR:
    case CURLE_UPLOAD_FAILED:
    case CURLE_REMOTE_ACCESS_DENIED:
    case CURLE_REMOTE_FILE_NOT_FOUND:
    case CURLE_REMOTE_DISK_FULL:
    case CURLE_FTP_COULDNT_RETR_FILE:
      return true;
    default:
      return false;
  }
}

}  // namespace

CurlFtpSession::~CurlFtpSession() {
  CurlFtpSession::Close();
}

Outcome CurlFtpSession::Open() {
  if (handle_ == nullptr) handle_ = curl_easy_init();
  if (handle_ == nullptr) return Failure{"the FTP library cannot be used"};
  return {};
}

void CurlFtpSession::Close() {
  if (handle_ != nullptr) curl_easy_cleanup(handle_);
  handle_ = nullptr;
  connected_ = false;
}

Outcome CurlFtpSession::Refuse(const std::string& path) const {
  if (!connected_) return Failure{"not connected to '" + target_.server + "'"};
  if (path.empty() || HasControlCharacter(path)) return Failure{"'" + path + "' is no name of a server file"};
  return {};
}

Outcome CurlFtpSession::Connect(const FtpTarget& target) {
  Close();
  target_ = target;
  lastResponse_.clear();
  if (target.server.empty() || target.server.find_first_of("/\\ @?#%[]") != std::string::npos ||
      HasControlCharacter(target.server))
    return Failure{"'" + target.server + "' is no name of a server"};
  if (target.port < 1 || target.port > 65535)
    return Failure{"the port " + std::to_string(target.port) + " is not from 1 to 65535"};
  if (HasControlCharacter(target.user + target.password))
    return Failure{"the user name or the password holds a control character"};
  if (Outcome opened = Open(); !opened) return opened;
  connected_ = true;
  Outcome done = Commands({}, "cannot connect to '" + target.server + "'");
  if (!done) Close();
  return done;
}

// The options of every operation; those of the one before are forgotten, its connection is not.
void CurlFtpSession::SetUp(const std::string& path) {
  CURL* curl = handle_;
  curl_easy_reset(curl);
  const auto limit = static_cast<long>(target_.timeLimit.count());
  curl_easy_setopt(curl, CURLOPT_URL, UrlOf(target_, path).c_str());
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "ftp");
  curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_MAXCONNECTS, 1L);
  curl_easy_setopt(curl, CURLOPT_USERNAME, target_.user.c_str());
  curl_easy_setopt(curl, CURLOPT_PASSWORD, target_.password.c_str());
  curl_easy_setopt(curl, CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_NOCWD));
  if (!target_.passive) curl_easy_setopt(curl, CURLOPT_FTPPORT, "-");
  if (target_.tls) curl_easy_setopt(curl, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
  if (!target_.caFile.empty()) curl_easy_setopt(curl, CURLOPT_CAINFO, target_.caFile.c_str());
  // An empty name keeps proxies of the environment out.
  curl_easy_setopt(curl, CURLOPT_PROXY, target_.useProxy ? target_.proxyName.c_str() : "");
  if (target_.useProxy) {
    curl_easy_setopt(curl, CURLOPT_PROXYPORT, static_cast<long>(target_.proxyPort));
    curl_easy_setopt(curl, CURLOPT_HTTPPROXYTUNNEL, 1L);
  }
  curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, limit);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, limit);
  curl_easy_setopt(curl, CURLOPT_ACCEPTTIMEOUT_MS, limit);
  curl_easy_setopt(curl, CURLOPT_SERVER_RESPONSE_TIMEOUT, std::max(1L, limit / 1000));
  curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &CurlFtpSession::OnHeader);
  curl_easy_setopt(curl, CURLOPT_HEADERDATA, this);
}

std::size_t CurlFtpSession::OnHeader(char* data, std::size_t size, std::size_t count, void* self) {
  const std::size_t bytes = size * count;
  return static_cast<CurlFtpSession*>(self)->TakeReplyLine({data, bytes}) ? bytes : 0;
}

bool CurlFtpSession::TakeReplyLine(std::string_view line) {
  replyBytes_ += line.size();
  if (replyBytes_ > kMaxReplyBytes) return false;
  reply_ += line;
  const bool last = line.size() >= 4 && line[3] == ' ' && LeadingDigits(line.substr(0, 3)) >= 100;
  if (!last) return true;
  while (!reply_.empty() && (reply_.back() == '\r' || reply_.back() == '\n')) reply_.pop_back();
  const std::string text = DecodeLenient(reply_);
  lastResponse_ = FirstCharacters(text, kMaxFtpResponseCharacters);
  reply_.clear();
  return true;
}

int CurlFtpSession::ReplyCode() const {
  long code = 0;
  curl_easy_getinfo(static_cast<CURL*>(handle_), CURLINFO_RESPONSE_CODE, &code);
  return static_cast<int>(code);
}

Outcome CurlFtpSession::Perform(const std::string& what) {
  reply_.clear();
  replyBytes_ = 0;
  const CURLcode code = curl_easy_perform(handle_);
  if (code == CURLE_OK) return {};
  if (!StaysConnected(code) || ReplyCode() == 421) connected_ = false;
  std::string reason = what + ": " + curl_easy_strerror(code);
  if (ReplyCode() >= 400 && !lastResponse_.empty()) reason += " (" + lastResponse_ + ")";
  return Failure{std::move(reason)};
}

Outcome CurlFtpSession::Commands(const std::vector<std::string>& commands, const std::string& what) {
  SetUp("");
  curl_slist* list = nullptr;
  for (const std::string& command : commands) list = curl_slist_append(list, command.c_str());
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_QUOTE, list);
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_NOBODY, 1L);
  Outcome done = Perform(what);
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_QUOTE, nullptr);
  curl_slist_free_all(list);
  return done;
}

Outcome CurlFtpSession::Upload(const std::string& path, std::string_view bytes, const FtpProgress& progress) {
  if (Outcome refused = Refuse(path); !refused) return refused;
  SetUp(path);
  CURL* curl = handle_;
  Source source{bytes, &progress};
  const auto limit = target_.timeLimit.count();
  curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
  curl_easy_setopt(curl, CURLOPT_READFUNCTION, &OnRead);
  curl_easy_setopt(curl, CURLOPT_READDATA, &source);
  curl_easy_setopt(curl, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(bytes.size()));
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, std::max(1L, static_cast<long>(limit / 1000)));
  curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS,
                   static_cast<long>(limit) + static_cast<long>(bytes.size() / kSlowestBytesPerMillisecond));
  Outcome done = Perform("cannot upload '" + path + "'");
  if (done && progress) progress(bytes.size());
  return done;
}

Result<bool> CurlFtpSession::Exists(const std::string& path) {
  if (Outcome refused = Refuse(path); !refused) return Failure{refused.Reason()};
  // Sizes are told in binary mode only.
  const std::string what = "cannot look for '" + path + "'";
  const Outcome asked = Commands({"TYPE I", "SIZE " + path}, what);
  if (asked) return true;
  if (!connected_) return Failure{asked.Reason()};
  if (LeadingDigits(lastResponse_) == 550) return false;
  return ListHas(path);  // a server without that command
}

Result<bool> CurlFtpSession::ListHas(const std::string& path) {
  SetUp(std::string(FolderPart(path)));
  CURL* curl = handle_;
  Sink sink{{}, kMaxListBytes};
  curl_easy_setopt(curl, CURLOPT_DIRLISTONLY, 1L);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &OnWrite);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &sink);
  const Outcome listed = Perform("cannot list the folder of '" + path + "'");
  if (!listed) {
    if (connected_ && LeadingDigits(lastResponse_) / 50 == 11) return false;  // 550: nothing there
    return Failure{listed.Reason()};
  }
  const std::string_view name = FileNamePart(path);
  std::string_view rest = sink.bytes;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (FileNamePart(line) == name) return true;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return false;
}

Outcome CurlFtpSession::Rename(const std::string& from, const std::string& to) {
  if (Outcome refused = Refuse(from); !refused) return refused;
  if (Outcome refused = Refuse(to); !refused) return refused;
  return Commands({"RNFR " + from, "RNTO " + to}, "cannot rename '" + from + "' to '" + to + "'");
}

Outcome CurlFtpSession::Delete(const std::string& path) {
  if (Outcome refused = Refuse(path); !refused) return refused;
  return Commands({"DELE " + path}, "cannot delete '" + path + "'");
}

Result<std::string> CurlFtpSession::Download(const std::string& path, std::size_t limit) {
  if (Outcome refused = Refuse(path); !refused) return Failure{refused.Reason()};
  SetUp(path);
  Sink sink{{}, limit};
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_WRITEFUNCTION, &OnWrite);
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_WRITEDATA, &sink);
  const Outcome done = Perform("cannot download '" + path + "'");
  if (!done) return Failure{done.Reason()};
  return std::move(sink.bytes);
}

CurlFtpSessions::CurlFtpSessions() {
  static const CURLcode once = curl_global_init(CURL_GLOBAL_DEFAULT);
  static_cast<void>(once);
}

}  // namespace zeb
