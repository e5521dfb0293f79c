#include "dashboard/Logon.h"

#include <chrono>
#include <optional>
#include <utility>

#include "dashboard/HttpTarget.h"
#include "dashboard/Json.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr int kMostWaiting = 8;
constexpr Duration kWaitLimit = 10s;
constexpr Duration kCheckLimit = 10s;

// Adds to a number while it lives.
struct Counted {
  int& number;
  explicit Counted(int& given) : number(given) { ++number; }
  ~Counted() { --number; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
};

struct Held {
  bool& flag;
  explicit Held(bool& given) : flag(given) { flag = true; }
  ~Held() { flag = false; }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
};

HttpAnswer TryLater(int status, std::string_view reason, Duration wait) {
  HttpAnswer answer = ErrorAnswer(status, reason);
  answer.headers.emplace_back("Retry-After",
                              std::to_string(std::chrono::ceil<std::chrono::seconds>(wait).count()));
  return answer;
}

}  // namespace

Logon::Logon(EventLoop& loop, std::shared_ptr<Secrets> secrets, Surroundings surroundings)
    : loop_(loop),
      secrets_(std::move(secrets)),
      surroundings_(std::move(surroundings)),
      sessions_(*secrets_),
      lane_(loop) {}

// Commands send JSON under any name, so what it looks like decides.
Result<Logon::Given> Logon::ReadPassword(const HttpRequest& request) {
  Given given;
  if (TrimBlanks(request.body).starts_with('{')) {
    const auto object = ReadJsonObject(request.body);
    if (!object) return object.AsFailure();
    Result<std::string> password = JsonText(object.Value(), "password");
    if (!password) return password.AsFailure();
    given.password = std::move(password.Value());
  } else {
    const auto form = ReadForm(request.body);
    if (!form) return form.AsFailure();
    given.asForm = true;
    for (const auto& [name, value] : form.Value())
      if (name == "password") given.password = value;
  }
  if (given.password.empty()) return Failure{"\"password\" is to be given"};
  if (given.password.size() > kMostPasswordBytes) return Failure{"the password is too long"};
  return given;
}

HttpAnswer Logon::LogOn(const HttpRequest& request) {
  const Result<Given> given = ReadPassword(request);
  if (!given) return ErrorAnswer(400, given.Reason());
  const std::string hash = surroundings_.passwordHash();
  if (hash != std::exchange(knownHash_, hash)) sessions_.EndAll();
  if (hash.empty()) return ErrorAnswer(403, "no password is set: `zebctl dashboard password` sets one");
  return Try(request, given.Value(), hash);
}

HttpAnswer Logon::Try(const HttpRequest& request, const Given& given, const std::string& hash) {
  if (const Duration wait = gate_.Begin(request.peerAddress, loop_.Monotonic()); wait > Duration::zero())
    return TryLater(429, "too many wrong passwords: wait a moment", wait);
  LogonGate::How how = LogonGate::How::kNotTried;
  {
    // Ends the try also when the settings cannot be read.
    const std::shared_ptr<void> ended(
        nullptr, [&](void*) { gate_.Ended(request.peerAddress, how, loop_.Monotonic()); });
    how = Check(hash, given.password);
    // One that was changed meanwhile is wrong by now.
    if (how == LogonGate::How::kRight && surroundings_.passwordHash() != hash) how = LogonGate::How::kWrong;
  }
  if (how == LogonGate::How::kRight) return Begin(request, given.asForm);
  if (how == LogonGate::How::kNotTried) return TryLater(503, "the password cannot be checked now", 10s);
  if (const auto more = wrong_.Next(loop_.Monotonic()))
    surroundings_.note("Dashboard: wrong password from " + request.peerAddress + *more);
  return ErrorAnswer(401, "wrong password");
}

LogonGate::How Logon::Check(const std::string& hash, const std::string& password) {
  if (waiting_ >= kMostWaiting) return LogonGate::How::kNotTried;
  {
    const Counted waiting(waiting_);
    if (!loop_.WaitUntil([this] { return !checking_; }, kWaitLimit)) return LogonGate::How::kNotTried;
  }
  const Held checking(checking_);
  const auto right = lane_.Run(
      [secrets = secrets_, hash, password] { return secrets->IsPassword(hash, password); }, kCheckLimit);
  if (!right) return LogonGate::How::kNotTried;
  return *right ? LogonGate::How::kRight : LogonGate::How::kWrong;
}

HttpAnswer Logon::Begin(const HttpRequest& request, bool asForm) {
  sessions_.End(request.Cookie(cookieName_));
  return Cookie(request, sessions_.Begin(loop_.Monotonic()), asForm, true);
}

HttpAnswer Logon::Cookie(const HttpRequest& request, const std::string& token, bool asForm, bool loggedOn) {
  HttpAnswer answer;
  answer.body = loggedOn ? "{\"loggedOn\":true}\n" : "{\"loggedOn\":false}\n";
  if (asForm) {
    answer = {303, "", "", {}};
    answer.headers.emplace_back("Location", "/");
  }
  const auto age = loggedOn ? std::chrono::duration_cast<std::chrono::seconds>(Sessions::kWhole).count() : 0;
  // A browser that came over TLS, through a proxy, is to keep it to that.
  const bool secure = request.Header("origin").starts_with("https://");
  answer.headers.emplace_back("Set-Cookie", cookieName_ + "=" + token +
                                                "; Path=/; Max-Age=" + std::to_string(age) +
                                                "; HttpOnly; SameSite=Strict" + (secure ? "; Secure" : ""));
  return answer;
}

HttpAnswer Logon::LogOff(const HttpRequest& request) {
  sessions_.End(request.Cookie(cookieName_));
  const bool asForm = request.Header("content-type").starts_with("application/x-www-form-urlencoded");
  return Cookie(request, "", asForm, false);
}

bool Logon::HasSession(const HttpRequest& request) {
  const std::string token = request.Cookie(cookieName_);
  return !token.empty() && sessions_.Use(token, loop_.Monotonic());
}

std::function<bool()> Logon::StillLoggedOn(const HttpRequest& request, const std::shared_ptr<Logon>& self) {
  return [weak = std::weak_ptr(self), token = request.Cookie(cookieName_)] {
    const auto logon = weak.lock();
    return logon && logon->sessions_.Lasts(token, logon->loop_.Monotonic());
  };
}

}  // namespace zeb
