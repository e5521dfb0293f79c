// Dashboard: the ways in to a running publisher: the local socket `zeb.socket` in the data folder, and HTTP
// on DashboardPort. Both take the same requests. Who runs it adds the routes; it has /login, /logout and
// /api/v1/session itself.
//
// What cannot be opened is told once in the journal and tried again every 30 s; the publisher runs on.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "dashboard/AccessRules.h"
#include "dashboard/DashboardSettings.h"
#include "dashboard/EventHub.h"
#include "dashboard/HttpServer.h"
#include "dashboard/Logon.h"
#include "dashboard/Router.h"
#include "diagnostics/RepeatedNote.h"
#include "platform/Environment.h"
#include "platform/LocalSockets.h"
#include "platform/Secrets.h"

namespace zeb {

inline constexpr char kLocalSocketName[] = "zeb.socket";

class Dashboard {
 public:
  // `secrets` null: nobody can log on. The rest outlives it.
  Dashboard(Environment& environment, LocalSockets& localSockets, std::shared_ptr<Secrets> secrets);
  ~Dashboard();
  Dashboard(const Dashboard&) = delete;
  Dashboard& operator=(const Dashboard&) = delete;

  // To be filled before Open. What its handlers use must outlive this object, or be asked for.
  Router& Routes() { return router_; }
  // GET `pattern` is a stream of the hub's events, for as long as the reader may read. The hub outlives this.
  void AddEvents(std::string_view pattern, EventHub& hub);

  void Open();
  void Reload();  // reads the settings again; a new password ends all sessions
  // Ends all connections, and removes the local socket. To be called before a program ends without
  // destroying anything.
  void Close();

  std::uint16_t Port() const { return listener_ ? listener_->Port() : std::uint16_t{0}; }
  std::string Url() const;  // "http://127.0.0.1:6980/"; "" while it does not listen
  std::string SocketPath() const;

 private:
  void AddOwnRoutes();
  bool ReadSettings();
  void OpenLocal();
  void OpenNetwork();
  void TryLater();
  void Tell(std::string& known, const std::string& problem);
  HttpServer::Handler Handler();
  void Handle(const HttpRequest& given, const HttpReply& reply);
  void RunInTask(const Router::Route& route, const HttpRequest& request, const HttpReply& reply);

  Environment& environment_;
  LocalSockets& localSockets_;
  std::shared_ptr<Secrets> secrets_;
  std::shared_ptr<Logon> logon_;  // null without secrets
  Router router_;
  DashboardSettings settings_;
  AccessRules rules_;
  HttpServer::Note note_;
  HttpServer localServer_;
  std::unique_ptr<HttpServer> server_;  // as the listener
  std::unique_ptr<LocalListener> socket_;
  std::unique_ptr<TcpListener> listener_;
  std::string settingsProblem_, socketProblem_, groupProblem_, networkProblem_;  // as told last
  RepeatedNote trouble_;
  std::shared_ptr<int> tasks_ = std::make_shared<int>(0);
  Timer retry_;
};

}  // namespace zeb
