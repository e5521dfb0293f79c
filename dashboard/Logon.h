// Logon: POST /login and POST /logout: a password for a session, kept in a cookie.
//
// Owned by shared_ptr, as a task that checks a password holds it. One password is checked at a time, on a
// worker; at most 8 wait for that.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "dashboard/HttpMessage.h"
#include "dashboard/LogonGate.h"
#include "dashboard/Sessions.h"
#include "diagnostics/RepeatedNote.h"
#include "platform/EventLoop.h"
#include "platform/Secrets.h"
#include "platform/WorkLane.h"

namespace zeb {

class Logon {
 public:
  struct Surroundings {
    std::function<std::string()> passwordHash;  // as it is stored now; "" when there is none
    std::function<void(const std::string& line)> note;
  };

  Logon(EventLoop& loop, std::shared_ptr<Secrets> secrets, Surroundings surroundings);

  // Cookies know no ports: two programs on one machine need two names.
  void SetPort(int port) { cookieName_ = "zeb_session_" + std::to_string(port); }

  HttpAnswer LogOn(const HttpRequest& request);  // in a task
  HttpAnswer LogOff(const HttpRequest& request);
  bool HasSession(const HttpRequest& request);  // counts as a use
  // For streams: asks whether the request's session still lasts.
  std::function<bool()> StillLoggedOn(const HttpRequest& request, const std::shared_ptr<Logon>& self);
  void EndAllSessions() { sessions_.EndAll(); }

 private:
  struct Given {
    std::string password;
    bool asForm = false;
  };
  static Result<Given> ReadPassword(const HttpRequest& request);
  HttpAnswer Try(const HttpRequest& request, const Given& given, const std::string& hash);
  LogonGate::How Check(const std::string& hash, const std::string& password);
  HttpAnswer Begin(const HttpRequest& request, bool asForm);
  HttpAnswer Cookie(const HttpRequest& request, const std::string& token, bool asForm, bool loggedOn);

  EventLoop& loop_;
  std::shared_ptr<Secrets> secrets_;
  Surroundings surroundings_;
  Sessions sessions_;
  LogonGate gate_;
  WorkLane lane_;
  RepeatedNote wrong_;
  std::string cookieName_ = "zeb_session";
  std::string knownHash_;
  bool checking_ = false;
  int waiting_ = 0;
};

}  // namespace zeb
