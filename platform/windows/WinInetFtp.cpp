#include "platform/windows/WinInetFtp.h"

#include <windows.h>
#include <wininet.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "text/Encodings.h"
#include "text/Numbers.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr char kAgent[] = "vb wininet";
constexpr std::size_t kMostWords = 64 * 1024;  // bytes of one reply, which a server could spin out
constexpr int kMostListed = 100'000;

bool HasControlCharacter(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
}

// What the server said during the last call on this thread.
std::string ServerWords() {
  DWORD error = 0, length = 0;
  if (InternetGetLastResponseInfoA(&error, nullptr, &length) || GetLastError() != ERROR_INSUFFICIENT_BUFFER)
    return {};
  std::string words(std::min<std::size_t>(length + 1, kMostWords), '\0');
  length = static_cast<DWORD>(words.size());
  if (!InternetGetLastResponseInfoA(&error, words.data(), &length)) return {};
  words.resize(length);
  return words;
}

std::string WinInetErrorText(DWORD error) {
  switch (error) {
    case ERROR_INTERNET_TIMEOUT:
      return "the server does not answer";
    case ERROR_INTERNET_NAME_NOT_RESOLVED:
      return "there is no server of that name";
    case ERROR_INTERNET_CANNOT_CONNECT:
      return "nothing there takes a connection";
    case ERROR_INTERNET_CONNECTION_ABORTED:
    case ERROR_INTERNET_CONNECTION_RESET:
    case ERROR_FTP_DROPPED:
      return "the server broke the connection off";
    case ERROR_INTERNET_LOGIN_FAILURE:
    case ERROR_INTERNET_INCORRECT_USER_NAME:
    case ERROR_INTERNET_INCORRECT_PASSWORD:
      return "the user name or the password is wrong";
    case ERROR_INTERNET_DISCONNECTED:
      return "this computer has no network";
    default:
      return "error " + std::to_string(error);
  }
}

void SetTimes(HINTERNET internet, std::chrono::milliseconds limit) {
  auto milliseconds = static_cast<ULONG>(limit.count());
  for (const DWORD option : {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_CONTROL_SEND_TIMEOUT,
                             INTERNET_OPTION_CONTROL_RECEIVE_TIMEOUT, INTERNET_OPTION_DATA_SEND_TIMEOUT,
                             INTERNET_OPTION_DATA_RECEIVE_TIMEOUT})
    InternetSetOptionA(internet, option, &milliseconds, sizeof milliseconds);
  ULONG once = 1;
  InternetSetOptionA(internet, INTERNET_OPTION_CONNECT_RETRIES, &once, sizeof once);
}

// A server's paths have "/" only, whatever the local ones have.
std::string_view ServerName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

int CodeOf(std::string_view reply) {
  return static_cast<int>(LeadingDigits(reply.substr(0, 3)));
}

}  // namespace

std::string_view LastFtpReply(std::string_view words) {
  while (!words.empty() && (words.back() == '\r' || words.back() == '\n')) words.remove_suffix(1);
  std::string_view last;
  for (std::size_t begin = 0, at = 0; at < words.size();) {
    const std::size_t end = std::min(words.find('\n', at), words.size());
    const std::string_view line = words.substr(at, end - at);
    const bool ends = line.size() >= 3 && LeadingDigits(line.substr(0, 3)) >= 100 &&
                      (line.size() == 3 || line[3] == ' ' || line[3] == '\r');
    at = end + 1;
    if (!ends && end < words.size()) continue;
    last = words.substr(begin, end - begin);
    begin = at;
  }
  while (!last.empty() && last.back() == '\r') last.remove_suffix(1);
  return last;
}

struct WinInetFtpSession::Answer {
  bool ok = false, late = false;
  DWORD error = 0;
  std::string words;
  Handle handle = nullptr;
  std::string bytes;  // that came, or a name
  DWORD count = 0;    // bytes that went
};

WinInetFtpSession::~WinInetFtpSession() {
  WinInetFtpSession::Close();
}

// ---- Calls with a limit

void WinInetFtpSession::Cancel() {
  Clock::rep never = 0;
  cancelledAt_.compare_exchange_strong(never, Clock::now().time_since_epoch().count());
  calls_.Hurry();
}

WinInetFtpSession::Clock::time_point WinInetFtpSession::Deadline() const {
  const Clock::time_point limit = std::min(callBegun_ + target_.timeLimit, operationEnd_);
  const Clock::rep cancelled = cancelledAt_;
  if (cancelled == 0) return limit;
  const auto patient = std::max(begun_, Clock::time_point(Clock::duration(cancelled))) + kFtpCancelPatience;
  return std::min<Clock::time_point>(limit, patient);
}

// Each `call` is one call of WinINet, so that nothing is called any more once its handles were closed.
WinInetFtpSession::Answer WinInetFtpSession::Ask(Call call) {
  callBegun_ = Clock::now();
  auto answer = calls_.Make(
      [call = std::move(call)] {
        Answer given;
        given.ok = call(given);
        if (!given.ok) given.error = GetLastError();
        given.words = ServerWords();
        return given;
      },
      [this] { return Deadline(); }, [this] { DropHandles(); });
  if (!answer) {
    connected_ = false;
    answer.emplace();
    answer->late = true;
  }
  if (!answer->words.empty())
    lastResponse_ = FirstCharacters(DecodeLenient(LastFtpReply(answer->words)), kMaxFtpResponseCharacters);
  return std::move(*answer);
}

// Closing its handles makes a call end, but may itself take as long as that call.
void WinInetFtpSession::DropHandles() {
  FtpCalls::Apart(
      [connection = std::exchange(connection_, nullptr), internet = std::exchange(internet_, nullptr)] {
        if (connection != nullptr) InternetCloseHandle(connection);
        if (internet != nullptr) InternetCloseHandle(internet);
      });
}

int WinInetFtpSession::ReplyCode() const {
  return CodeOf(lastResponse_);
}

Failure WinInetFtpSession::Failed(const std::string& what, const Answer& answer) {
  // The server answered, and goes on listening.
  const bool refused = ReplyCode() >= 400 && ReplyCode() != 421;
  if (!refused) connected_ = false;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(target_.timeLimit).count();
  std::string reason = what + ": ";
  if (cancelledAt_ != 0 && answer.late)
    reason += "it was ended";
  else if (answer.late)
    reason += "no answer for " + std::to_string(seconds) + " s";
  else if (ReplyCode() >= 400)
    reason += lastResponse_;
  else
    reason += WinInetErrorText(answer.error);
  return Failure{std::move(reason)};
}

Outcome WinInetFtpSession::Done(const std::string& what, const Answer& answer) {
  if (answer.ok && ReplyCode() < 400) return {};
  return Failed(what, answer);
}

// ---- The connection

Outcome WinInetFtpSession::Open() {
  const HINTERNET internet = InternetOpenA(kAgent, INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0);
  if (internet == nullptr)
    return Failure{"the system's FTP cannot be used: " + WinInetErrorText(GetLastError())};
  InternetCloseHandle(internet);
  return {};
}

// WinINet keeps a server's words for a thread; a new one has none of an earlier step.
void WinInetFtpSession::ForgetWords() {
  lastResponse_.clear();
  calls_.Renew();
}

// Each operation begins with it.
Outcome WinInetFtpSession::Begin(const std::string& path) {
  ForgetWords();
  begun_ = Clock::now();
  operationEnd_ = begun_ + target_.timeLimit;
  if (!connected_) return Failure{"not connected to '" + target_.server + "'"};
  if (path.empty() || HasControlCharacter(path)) return Failure{"'" + path + "' is no name of a server file"};
  return {};
}

Outcome WinInetFtpSession::Connect(const FtpTarget& target) {
  Close();
  target_ = target;
  if (target.server.empty() || target.server.find_first_of("/\\ @?#%[]") != std::string::npos ||
      HasControlCharacter(target.server))
    return Failure{"'" + target.server + "' is no name of a server"};
  if (target.port < 1 || target.port > 65535)
    return Failure{"the port " + std::to_string(target.port) + " is not from 1 to 65535"};
  if (HasControlCharacter(target.user + target.password))
    return Failure{"the user name or the password holds a control character"};
  connected_ = true;
  static_cast<void>(Begin("/"));
  const std::string proxy = target.proxyName + ":" + std::to_string(target.proxyPort);
  internet_ = InternetOpenA(kAgent, target.useProxy ? INTERNET_OPEN_TYPE_PROXY : INTERNET_OPEN_TYPE_DIRECT,
                            target.useProxy ? proxy.c_str() : nullptr, nullptr, 0);
  const std::string what = "cannot connect to '" + target.server + "'";
  if (internet_ == nullptr) {
    connected_ = false;
    return Failure{what + ": " + WinInetErrorText(GetLastError())};
  }
  SetTimes(internet_, target.timeLimit);
  const Answer answer = Ask([internet = internet_, target](Answer& given) {
    given.handle = InternetConnectA(internet, target.server.c_str(), static_cast<INTERNET_PORT>(target.port),
                                    target.user.c_str(), target.password.c_str(), INTERNET_SERVICE_FTP,
                                    target.passive ? INTERNET_FLAG_PASSIVE : 0, 0);
    return given.handle != nullptr;
  });
  connection_ = answer.handle;
  if (answer.ok) return {};
  Failure failure = Failed(what, answer);
  connected_ = false;
  const std::string words = std::exchange(lastResponse_, {});
  Close();
  lastResponse_ = words;
  return failure;
}

// Says goodbye, but not for long.
void WinInetFtpSession::Close() {
  connected_ = binary_ = false;
  if (connection_ == nullptr && internet_ == nullptr) return;
  calls_.Renew();
  begun_ = Clock::now();
  operationEnd_ = begun_ + std::min<std::chrono::milliseconds>(target_.timeLimit, kFtpCancelPatience);
  for (Handle* handle : {&connection_, &internet_})
    if (const Handle closing = std::exchange(*handle, nullptr); closing != nullptr)
      Ask([closing](Answer&) { return InternetCloseHandle(closing) != FALSE; });
}

// ---- Operations

WinInetFtpSession::Answer WinInetFtpSession::Command(const std::string& command) {
  return Ask([connection = connection_, command](Answer&) {
    return FtpCommandA(connection, FALSE, FTP_TRANSFER_TYPE_BINARY, command.c_str(), 0, nullptr) != FALSE;
  });
}

Outcome WinInetFtpSession::Probe() {
  if (Outcome refused = Begin("/"); !refused) return refused;
  const Outcome answered = Done("'" + target_.server + "' does not answer", Command("NOOP"));
  return connected_ ? Outcome() : answered;
}

Outcome WinInetFtpSession::Rename(const std::string& from, const std::string& to) {
  if (Outcome refused = Begin(from); !refused) return refused;
  if (Outcome refused = Begin(to); !refused) return refused;
  return Done("cannot rename '" + from + "' to '" + to + "'",
              Ask([connection = connection_, from, to](Answer&) {
                return FtpRenameFileA(connection, from.c_str(), to.c_str()) != FALSE;
              }));
}

Outcome WinInetFtpSession::Delete(const std::string& path) {
  if (Outcome refused = Begin(path); !refused) return refused;
  return Done("cannot delete '" + path + "'", Ask([connection = connection_, path](Answer&) {
                return FtpDeleteFileA(connection, path.c_str()) != FALSE;
              }));
}

Result<bool> WinInetFtpSession::Exists(const std::string& path) {
  if (Outcome refused = Begin(path); !refused) return refused.AsFailure();
  const std::string what = "cannot look for '" + path + "'";
  if (!binary_) {
    binary_ = Done(what, Command("TYPE I")).Ok();
    if (!connected_) return Failure{what + ": the server broke the connection off"};
  }
  const Outcome asked = Done(what, Command("SIZE " + path));
  if (asked) return true;
  if (!connected_) return asked.AsFailure();
  if (ReplyCode() == 550) return false;
  return ListHas(path, what);  // a server without that command
}

// The system reads the listing; a path with a star or a question mark in it finds more than one file.
Result<bool> WinInetFtpSession::ListHas(const std::string& path, const std::string& what) {
  binary_ = false;
  ForgetWords();
  const auto take = [](Answer& given, const WIN32_FIND_DATAA& found) {
    const bool folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    given.bytes = folder ? "" : std::string(found.cFileName);
  };
  Answer answer = Ask([connection = connection_, path, take](Answer& given) {
    WIN32_FIND_DATAA found{};
    given.handle = FtpFindFirstFileA(connection, path.c_str(), &found, INTERNET_FLAG_RELOAD, 0);
    if (given.handle != nullptr) take(given, found);
    return given.handle != nullptr;
  });
  if (!answer.ok) {
    // The list came without the name, or there is no such folder.
    const bool none = answer.error == ERROR_NO_MORE_FILES || ReplyCode() / 100 == 2 || ReplyCode() / 50 == 11;
    if (none && !answer.late) return false;
    return Failed(what, answer);
  }
  const Handle list = answer.handle;
  bool has = false;
  for (int listed = 0; answer.ok && !has && listed < kMostListed; ++listed) {
    has = !answer.bytes.empty() && ServerName(answer.bytes) == ServerName(path);
    if (has) break;
    answer = Ask([list, take](Answer& given) {
      WIN32_FIND_DATAA found{};
      const bool more = InternetFindNextFileA(list, &found) != FALSE;
      if (more) take(given, found);
      return more;
    });
  }
  if (answer.late) return Failed(what, answer);
  CloseFile(list);
  return has;
}

WinInetFtpSession::Answer WinInetFtpSession::OpenFile(const std::string& path, bool toWrite) {
  return Ask([connection = connection_, path, toWrite](Answer& given) {
    given.handle = FtpOpenFileA(connection, path.c_str(), toWrite ? GENERIC_WRITE : GENERIC_READ,
                                FTP_TRANSFER_TYPE_BINARY | INTERNET_FLAG_RELOAD, 0);
    return given.handle != nullptr;
  });
}

// Ends a transfer: the server says what became of it.
WinInetFtpSession::Answer WinInetFtpSession::CloseFile(Handle file) {
  return Ask([file](Answer&) { return InternetCloseHandle(file) != FALSE; });
}

Outcome WinInetFtpSession::Upload(const std::string& path, const FtpSource& source) {
  if (Outcome refused = Begin(path); !refused) return refused;
  operationEnd_ += std::chrono::seconds(source.size / kFtpSlowestBytesPerSecond);
  const std::string what = "cannot upload '" + path + "'";
  const Answer opened = OpenFile(path, true);
  if (!opened.ok) return Failed(what, opened);
  ForgetWords();  // it only said that it begins
  Outcome sent = Send(opened.handle, source, what);
  if (!sent && !connected_) return sent;
  const Answer closed = CloseFile(opened.handle);
  if (closed.late) return Failed(what, closed);
  binary_ = true;
  if (ReplyCode() >= 400) return Failed(what, closed);
  if (!sent) return sent;
  return ReplyCode() >= 200 ? Outcome() : CheckUploaded(path, source.size, what);
}

// Block after block. What the source ends leaves the connection to be tidied up with.
Outcome WinInetFtpSession::Send(Handle file, const FtpSource& source, const std::string& what) {
  std::array<char, kFtpBlockBytes> block;
  for (std::uint64_t sent = 0; sent < source.size;) {
    const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), source.size - sent));
    const std::optional<std::size_t> got = source.read(block.data(), most);
    if (!got || *got == 0) return Failure{what + ": it was ended"};
    for (std::size_t at = 0; at < *got;) {
      const Answer written = Ask([file, bytes = std::string(block.data() + at, *got - at)](Answer& given) {
        return InternetWriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &given.count) !=
                   FALSE &&
               given.count > 0;
      });
      if (written.late) return Failed(what, written);
      if (!written.ok) return Failure{what + ": " + WinInetErrorText(written.error)};
      at += written.count;
    }
    sent += *got;
  }
  return {};
}

// For a system that keeps to itself how the server took the end of the file.
Outcome WinInetFtpSession::CheckUploaded(const std::string& path, std::uint64_t size,
                                         const std::string& what) {
  const Outcome asked = Done(what, Command("SIZE " + path));
  if (!connected_) return asked;
  if (!asked || ReplyCode() != 213) return {};  // it does not tell
  const std::string_view told =
      std::string_view(lastResponse_).substr(std::min<std::size_t>(4, lastResponse_.size()));
  const std::optional<std::uint64_t> stored = WholeNumber<std::uint64_t>(told);
  if (!stored || *stored == size) return {};
  return Failure{what + ": of " + std::to_string(size) + " bytes the server has " + std::to_string(*stored)};
}

Result<std::string> WinInetFtpSession::Download(const std::string& path, std::size_t limit) {
  if (Outcome refused = Begin(path); !refused) return refused.AsFailure();
  const std::string what = "cannot download '" + path + "'";
  const Answer opened = OpenFile(path, false);
  if (!opened.ok) return Failed(what, opened);
  ForgetWords();
  std::string bytes;
  for (bool more = true; more && bytes.size() <= limit;) {
    const Answer read = Ask([file = opened.handle](Answer& given) {
      given.bytes.resize(16 * 1024);
      const bool came = InternetReadFile(file, given.bytes.data(), static_cast<DWORD>(given.bytes.size()),
                                         &given.count) != FALSE;
      given.bytes.resize(given.count);
      return came;
    });
    if (!read.ok) {
      if (!read.late) CloseFile(opened.handle);
      return Failed(what, read);
    }
    more = read.count > 0;
    bytes += read.bytes;
  }
  const Answer closed = CloseFile(opened.handle);
  binary_ = true;
  if (bytes.size() > limit) return Failure{what + ": it is larger than " + std::to_string(limit) + " bytes"};
  if (closed.late || ReplyCode() >= 400) return Failed(what, closed);
  return bytes;
}

}  // namespace zeb
