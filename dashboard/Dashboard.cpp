#include "dashboard/Dashboard.h"

#include <chrono>
#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "platform/EventLoop.h"
#include "platform/Operator.h"
#include "text/Paths.h"

namespace zeb {

namespace {

constexpr Duration kRetry = std::chrono::seconds(30);
// A peer that is told that there is no answer is gone, its task perhaps not.
constexpr int kMostTasks = 64;

}  // namespace

Dashboard::Dashboard(Environment& environment, LocalSockets& localSockets, std::shared_ptr<Secrets> secrets)
    : environment_(environment),
      localSockets_(localSockets),
      secrets_(std::move(secrets)),
      note_([&environment](const std::string& line) { environment.person.Note(line); }),
      localServer_(environment.loop, WayIn::kLocal, Handler(), note_) {
  if (secrets_) {
    logon_ = std::make_shared<Logon>(
        environment_.loop, secrets_,
        Logon::Surroundings{
            [&environment] {
              return DashboardSettings::Read(environment.hive, environment.settingsRoot).passwordHash;
            },
            note_});
  }
  AddOwnRoutes();
}

Dashboard::~Dashboard() {
  Close();
}

void Dashboard::AddOwnRoutes() {
  if (logon_) {
    router_.AddTask("POST", "/login", Need::kNothing,
                    [logon = logon_](const HttpRequest& request) { return logon->LogOn(request); });
    router_.Add("POST", "/logout", Need::kNothing,
                [logon = logon_](const HttpRequest& request) { return logon->LogOff(request); });
  }
  // What a page must know to show the log-on or to hide the buttons.
  router_.Add("GET", "/api/v1/session", Need::kNothing, [this](const HttpRequest& request) {
    const bool loggedOn = request.way == WayIn::kLocal || (logon_ && logon_->HasSession(request));
    const bool mayRead = loggedOn || request.way == WayIn::kLoopback;
    const auto word = [](bool value) { return std::string(value ? "true" : "false"); };
    HttpAnswer answer;
    answer.body = "{\"loggedOn\":" + word(loggedOn) + ",\"mayRead\":" + word(mayRead) +
                  ",\"mayAct\":" + word(loggedOn) +
                  ",\"passwordSet\":" + word(!settings_.passwordHash.empty()) + "}\n";
    return answer;
  });
}

void Dashboard::AddEvents(std::string_view pattern, EventHub& hub) {
  router_.AddLater(
      "GET", pattern, Need::kRead, [this, &hub](const HttpRequest& request, const HttpReply& reply) {
        // On other ways reading needs no session.
        hub.Add(reply,
                request.way == WayIn::kNetwork && logon_ ? logon_->StillLoggedOn(request, logon_) : nullptr);
      });
}

std::string Dashboard::SocketPath() const {
  return JoinPath(environment_.dataFolder, kLocalSocketName);
}

std::string Dashboard::Url() const {
  if (!listener_) return "";
  const bool six = settings_.address.find(':') != std::string::npos;
  return "http://" + (six ? "[" + settings_.address + "]" : settings_.address) + ":" +
         std::to_string(Port()) + "/";
}

// Once, until it is another.
void Dashboard::Tell(std::string& known, const std::string& problem) {
  if (known == problem) return;
  known = problem;
  if (!problem.empty()) note_("Dashboard: " + problem);
}

bool Dashboard::ReadSettings() {
  try {
    settings_ = DashboardSettings::Read(environment_.hive, environment_.settingsRoot);
    Tell(settingsProblem_, "");
    return true;
  } catch (const SettingsError& error) {
    Tell(settingsProblem_, error.what());
    return false;
  }
}

void Dashboard::Open() {
  retry_.Stop();
  if (ReadSettings()) {
    rules_ = AccessRules(settings_.names);
    if (!socket_) OpenLocal();
    if (!listener_) OpenNetwork();
  }
  if (!socketProblem_.empty() || !networkProblem_.empty() || !settingsProblem_.empty()) TryLater();
}

void Dashboard::TryLater() {
  retry_ = environment_.loop.After(kRetry, [this] { Open(); });
}

void Dashboard::OpenLocal() {
  auto socket = localSockets_.MakeLocalListener();
  socket->onConnection = [this](std::unique_ptr<TcpConnection> connection) {
    localServer_.Take(std::move(connection));
  };
  const Outcome listening = socket->Listen(SocketPath());
  Tell(socketProblem_, listening.Reason());
  if (!listening) return;
  socket_ = std::move(socket);
  if (settings_.socketGroup.empty()) return;
  Tell(groupProblem_, socket_->AdmitGroup(settings_.socketGroup).Reason());
}

void Dashboard::OpenNetwork() {
  if (settings_.port == 0) {
    Tell(networkProblem_, "");
    return;
  }
  if (settings_.Way() == WayIn::kNetwork && (settings_.passwordHash.empty() || !logon_)) {
    Tell(networkProblem_, "does not listen on " + settings_.address +
                              " before a password is set: `zebctl dashboard password` sets one");
    return;
  }
  auto listener = environment_.network.MakeListener();
  const Outcome listening = listener->Listen(settings_.address, static_cast<std::uint16_t>(settings_.port));
  Tell(networkProblem_, listening.Reason());
  if (!listening) return;
  server_ = std::make_unique<HttpServer>(environment_.loop, settings_.Way(), Handler(), note_);
  listener->onConnection = [this](std::unique_ptr<TcpConnection> connection) {
    server_->Take(std::move(connection));
  };
  listener->onTrouble = [this](const std::string& what) {
    if (const auto more = trouble_.Next(environment_.loop.Monotonic())) note_("Dashboard: " + what + *more);
  };
  listener_ = std::move(listener);
  if (logon_) logon_->SetPort(listener_->Port());
  note_("The dashboard is at " + Url());
}

void Dashboard::Reload() {
  const DashboardSettings before = settings_;
  if (!ReadSettings()) return TryLater();
  if (logon_ && before.passwordHash != settings_.passwordHash) logon_->EndAllSessions();
  if (before.socketGroup != settings_.socketGroup) socket_.reset();
  const bool mayListen = settings_.Way() == WayIn::kLoopback || !settings_.passwordHash.empty();
  if (before.port != settings_.port || before.address != settings_.address || !mayListen) {
    listener_.reset();
    server_.reset();
  }
  networkProblem_.clear();
  Open();
}

void Dashboard::Close() {
  retry_.Stop();
  listener_.reset();
  server_.reset();
  socket_.reset();
  localServer_.CloseAll();
}

HttpServer::Handler Dashboard::Handler() {
  return [this](const HttpRequest& request, const HttpReply& reply) { Handle(request, reply); };
}

void Dashboard::Handle(const HttpRequest& given, const HttpReply& reply) {
  HttpRequest request = given;
  request.way = rules_.WayOf(given);
  const Router::Found found = router_.Find(request);
  const bool hasSession = logon_ && logon_->HasSession(request);
  const AccessRules::Verdict verdict =
      rules_.Check(request, found.route ? found.route->need : Need::kRead, hasSession);
  if (!verdict.Allowed()) return reply.Send(ErrorAnswer(verdict.status, verdict.reason));
  if (!found.route) {
    HttpAnswer answer = found.allow.empty() ? ErrorAnswer(404, "there is nothing here")
                                            : ErrorAnswer(405, "this is not done so here");
    if (!found.allow.empty()) answer.headers.emplace_back("Allow", found.allow);
    return reply.Send(answer);
  }
  if (found.route->inTask) return RunInTask(*found.route, request, reply);
  found.route->handler(request, reply);
}

void Dashboard::RunInTask(const Router::Route& route, const HttpRequest& request, const HttpReply& reply) {
  if (*tasks_ >= kMostTasks) return reply.Send(ErrorAnswer(503, "too much is being done already"));
  environment_.loop.Start("a request", [handler = route.handler, request, reply, tasks = tasks_] {
    ++*tasks;
    const std::shared_ptr<void> counted(tasks.get(), [tasks](void*) { --*tasks; });
    try {
      handler(request, reply);
    } catch (const std::exception&) {
      ReportException("answering a request", Report::kQuietly);
      reply.Send(ErrorAnswer(500, "there was a fault; the debug log tells more"));
    }
  });
}

}  // namespace zeb
