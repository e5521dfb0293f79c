#include "platform/common/CurlFtpSession.h"

#include <curl/curl.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "platform/system/DescriptorLimit.h"
#include "text/Encodings.h"
#include "text/Numbers.h"
#include "text/Paths.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

// More than any server has to say; one that never stops talking must not hold up an update.
constexpr std::size_t kMaxReplyBytes = 64 * 1024;
constexpr std::size_t kMaxListBytes = 4u * 1024 * 1024;

bool HasControlCharacter(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

// The address of a server file; nothing when libcurl cannot make one of it. A path begins behind the address'
// own "/", so that a leading one is part of it.
CURLU* UrlOf(const FtpTarget& target, const std::string& path) {
  const bool ipv6 = target.server.find(':') != std::string::npos;
  CURLU* url = curl_url();
  const bool made =
      url != nullptr && curl_url_set(url, CURLUPART_SCHEME, "ftp", 0) == CURLUE_OK &&
      curl_url_set(url, CURLUPART_HOST, (ipv6 ? "[" + target.server + "]" : target.server).c_str(), 0) ==
          CURLUE_OK &&
      curl_url_set(url, CURLUPART_PORT, std::to_string(target.port).c_str(), 0) == CURLUE_OK &&
      curl_url_set(url, CURLUPART_PATH, ("/" + path).c_str(), CURLU_URLENCODE) == CURLUE_OK;
  if (made) return url;
  curl_url_cleanup(url);
  return nullptr;
}

struct Feed {
  const FtpSource* source;
  std::uint64_t sent = 0;
  bool ended = false;  // by the source
};

struct Sink {
  std::string bytes;
  std::size_t limit;
};

// The server answered, and goes on listening.
bool StaysConnected(CURLcode code) {
  switch (code) {
    case CURLE_QUOTE_ERROR:
    case CURLE_UPLOAD_FAILED:
    case CURLE_REMOTE_ACCESS_DENIED:
    case CURLE_REMOTE_FILE_NOT_FOUND:
    case CURLE_REMOTE_DISK_FULL:
    case CURLE_FTP_COULDNT_RETR_FILE:
    case CURLE_PARTIAL_FILE:  // an upload that was ended early
      return true;
    default:
      return false;
  }
}

}  // namespace

// What libcurl calls.
struct CurlCallbacks {
  // A connection stays open between updates, so it must leave descriptors to the others.
  static curl_socket_t OnOpen(void* session, curlsocktype, curl_sockaddr* address) {
    const SocketNumber made = OpenSocketWithinLimit(address->family, address->socktype, address->protocol,
                                                    static_cast<CurlFtpSession*>(session)->noDescriptor_);
    return made == kNoSocket ? CURL_SOCKET_BAD : static_cast<curl_socket_t>(made);
  }

  // An upload that is ended early is given an early end of file: an abort would end the connection too.
  static std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* data) {
    auto& feed = *static_cast<Feed*>(data);
    const std::uint64_t left = feed.source->size - feed.sent;
    const auto most = static_cast<std::size_t>(std::min<std::uint64_t>({size * count, kFtpBlockBytes, left}));
    if (most == 0 || feed.ended) return 0;
    const std::optional<std::size_t> got = feed.source->read(buffer, most);
    feed.ended = !got || *got == 0;
    if (feed.ended) return 0;
    feed.sent += *got;
    return *got;
  }

  static std::size_t OnWrite(char* data, std::size_t size, std::size_t count, void* to) {
    auto& sink = *static_cast<Sink*>(to);
    if (size * count > sink.limit - sink.bytes.size()) return 0;
    sink.bytes.append(data, size * count);
    return size * count;
  }

  static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* self) {
    const std::size_t bytes = size * count;
    return static_cast<CurlFtpSession*>(self)->TakeReplyLine({data, bytes}) ? bytes : 0;
  }

  // Called at least about once a second, whatever is waited for.
  static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<const CurlFtpSession*>(self)->Patient() ? 0 : 1;
  }
};

CurlFtpSession::~CurlFtpSession() {
  CurlFtpSession::Close();
}

Outcome CurlFtpSession::Open() {
  if (handle_ == nullptr) handle_ = curl_easy_init();
  if (handle_ == nullptr) return Failure{"the FTP library cannot be used"};
  return {};
}

// Says goodbye, but not for long. libcurl would do so again, and wait two minutes for a server that hangs:
// a socket that is shut keeps it from that.
void CurlFtpSession::Close() {
  if (handle_ != nullptr) {
    if (connected_) {
      target_.timeLimit = std::min<std::chrono::milliseconds>(target_.timeLimit, kFtpCancelPatience);
      begun_ = Clock::now();
      static_cast<void>(Command("QUIT", ""));
    }
    curl_socket_t socket = CURL_SOCKET_BAD;
    curl_easy_getinfo(static_cast<CURL*>(handle_), CURLINFO_ACTIVESOCKET, &socket);
    if (socket != CURL_SOCKET_BAD) EndConnection(static_cast<SocketNumber>(socket));
    curl_easy_cleanup(handle_);
  }
  curl_url_cleanup(static_cast<CURLU*>(url_));
  handle_ = url_ = nullptr;
  connected_ = binary_ = false;
}

void CurlFtpSession::Cancel() {
  Clock::rep never = 0;
  cancelledAt_.compare_exchange_strong(never, Clock::now().time_since_epoch().count());
}

bool CurlFtpSession::Patient() const {
  const Clock::rep cancelled = cancelledAt_;
  if (cancelled == 0) return true;
  return Clock::now() - std::max(begun_, Clock::time_point(Clock::duration(cancelled))) < kFtpCancelPatience;
}

// Each operation begins with it.
Outcome CurlFtpSession::Begin(const std::string& path) {
  lastResponse_.clear();
  begun_ = Clock::now();
  if (!connected_) return Failure{"not connected to '" + target_.server + "'"};
  if (path.empty() || HasControlCharacter(path)) return Failure{"'" + path + "' is no name of a server file"};
  return {};
}

Outcome CurlFtpSession::Connect(const FtpTarget& target) {
  Close();
  target_ = target;
  lastResponse_.clear();
  begun_ = Clock::now();
  if (target.server.empty() || target.server.find_first_of("/\\ @?#%[]") != std::string::npos ||
      HasControlCharacter(target.server))
    return Failure{"'" + target.server + "' is no name of a server"};
  if (target.port < 1 || target.port > 65535)
    return Failure{"the port " + std::to_string(target.port) + " is not from 1 to 65535"};
  if (HasControlCharacter(target.user + target.password))
    return Failure{"the user name or the password holds a control character"};
  if (Outcome opened = Open(); !opened) return opened;
  connected_ = true;
  SetUp("");
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_NOBODY, 1L);
  Outcome done = Perform("cannot connect to '" + target.server + "'");
  if (done) return done;
  connected_ = false;
  Close();
  return done;
}

// The options of every operation; those of the one before are forgotten, its connection is not.
void CurlFtpSession::SetUp(const std::string& path) {
  CURL* curl = handle_;
  curl_easy_reset(curl);
  // What the operation has left of its time; 0 would mean any time.
  const auto left =
      target_.timeLimit - std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begun_);
  const long limit = std::max(1L, static_cast<long>(left.count()));
  curl_url_cleanup(static_cast<CURLU*>(url_));
  url_ = UrlOf(target_, path);
  curl_easy_setopt(curl, CURLOPT_CURLU, static_cast<CURLU*>(url_));
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
  curl_easy_setopt(curl, CURLOPT_OPENSOCKETFUNCTION, &CurlCallbacks::OnOpen);
  curl_easy_setopt(curl, CURLOPT_OPENSOCKETDATA, this);
  curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &CurlCallbacks::OnHeader);
  curl_easy_setopt(curl, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &CurlCallbacks::OnProgress);
  curl_easy_setopt(curl, CURLOPT_XFERINFODATA, this);
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
  lastResponse_.clear();
  replyBytes_ = 0;
  noDescriptor_ = false;
  if (url_ == nullptr) return Failure{what + ": its name is none that the FTP library takes"};
  const CURLcode code = curl_easy_perform(handle_);
  long connections = 0;
  curl_easy_getinfo(static_cast<CURL*>(handle_), CURLINFO_NUM_CONNECTS, &connections);
  isAnew_ = connections > 0;  // for a transfer its data connection counts
  if (isAnew_) binary_ = false;
  if (code == CURLE_OK) return {};
  if (!StaysConnected(code) || ReplyCode() == 421) connected_ = false;
  if (noDescriptor_) return Failure{what + ": too many open files: raise LimitNOFILE"};
  std::string reason = what + ": " + curl_easy_strerror(code);
  if (ReplyCode() >= 400 && !lastResponse_.empty()) reason += " (" + lastResponse_ + ")";
  return Failure{std::move(reason)};
}

// One command to the server. The mark in front lets it be refused without the connection being dropped.
Outcome CurlFtpSession::Command(const std::string& command, const std::string& what) {
  SetUp("");
  CURL* curl = handle_;
  curl_slist* list = curl_slist_append(nullptr, ("*" + command).c_str());
  curl_easy_setopt(curl, CURLOPT_QUOTE, list);
  curl_easy_setopt(curl, CURLOPT_NOBODY, 1L);
  Outcome done = Perform(what);
  curl_easy_setopt(curl, CURLOPT_QUOTE, nullptr);
  curl_slist_free_all(list);
  if (!done) return done;
  const std::int64_t code = LeadingDigits(lastResponse_);
  if (code >= 100 && code < 400) return {};
  if (code == 421) connected_ = false;
  return Failure{what + ": " + (lastResponse_.empty() ? "no answer" : lastResponse_)};
}

Outcome CurlFtpSession::Probe() {
  if (Outcome refused = Begin("/"); !refused) return refused;
  const Outcome answered = Command("NOOP", "'" + target_.server + "' does not answer");
  return connected_ ? Outcome() : answered;
}

Outcome CurlFtpSession::Upload(const std::string& path, const FtpSource& source) {
  if (Outcome refused = Begin(path); !refused) return refused;
  SetUp(path);
  CURL* curl = handle_;
  Feed feed{&source};
  const auto limit = target_.timeLimit.count();
  const auto slowest = source.size / kFtpSlowestBytesPerSecond * 1000;
  curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
  curl_easy_setopt(curl, CURLOPT_READFUNCTION, &CurlCallbacks::OnRead);
  curl_easy_setopt(curl, CURLOPT_READDATA, &feed);
  curl_easy_setopt(curl, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(source.size));
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, std::max(1L, static_cast<long>(limit / 1000)));
  curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(limit) + static_cast<long>(slowest));
  const std::string what = "cannot upload '" + path + "'";
  Outcome done = Perform(what);
  binary_ = done.Ok();
  if (feed.ended) return Failure{what + ": it was ended"};
  return done;
}

Result<bool> CurlFtpSession::Exists(const std::string& path) {
  if (Outcome refused = Begin(path); !refused) return refused.AsFailure();
  const std::string what = "cannot look for '" + path + "'";
  if (!binary_) {
    const Outcome set = Command("TYPE I", what);
    if (!connected_) return set.AsFailure();
    binary_ = set.Ok();
  }
  const Outcome asked = Command("SIZE " + path, what);
  if (asked) return true;
  if (!connected_) return asked.AsFailure();
  if (LeadingDigits(lastResponse_) == 550) return false;
  return ListHas(path);  // a server without that command
}

Result<bool> CurlFtpSession::ListHas(const std::string& path) {
  SetUp(std::string(FolderPart(path)));
  CURL* curl = handle_;
  Sink sink{{}, kMaxListBytes};
  curl_easy_setopt(curl, CURLOPT_DIRLISTONLY, 1L);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &CurlCallbacks::OnWrite);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &sink);
  const Outcome listed = Perform("cannot list the folder of '" + path + "'");
  if (!listed) {
    if (connected_ && LeadingDigits(lastResponse_) / 50 == 11) return false;  // 550: nothing there
    return listed.AsFailure();
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
  if (Outcome refused = Begin(from); !refused) return refused;
  if (Outcome refused = Begin(to); !refused) return refused;
  const std::string what = "cannot rename '" + from + "' to '" + to + "'";
  if (Outcome found = Command("RNFR " + from, what); !found) return found;
  Outcome renamed = Command("RNTO " + to, what);
  // A new connection knows nothing of the command before.
  if (!renamed && isAnew_) connected_ = false;
  return renamed;
}

Outcome CurlFtpSession::Delete(const std::string& path) {
  if (Outcome refused = Begin(path); !refused) return refused;
  return Command("DELE " + path, "cannot delete '" + path + "'");
}

Result<std::string> CurlFtpSession::Download(const std::string& path, std::size_t limit) {
  if (Outcome refused = Begin(path); !refused) return refused.AsFailure();
  SetUp(path);
  Sink sink{{}, limit};
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_WRITEFUNCTION, &CurlCallbacks::OnWrite);
  curl_easy_setopt(static_cast<CURL*>(handle_), CURLOPT_WRITEDATA, &sink);
  const Outcome done = Perform("cannot download '" + path + "'");
  if (!done) return done.AsFailure();
  return std::move(sink.bytes);
}

CurlFtpSessions::CurlFtpSessions() {
  static const CURLcode once = curl_global_init(CURL_GLOBAL_DEFAULT);
  static_cast<void>(once);
}

}  // namespace zeb
