#include "app/PublisherCommands.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <chrono>
#include <utility>

#include "app/PublisherLink.h"
#include "app/StatusTable.h"
#include "dashboard/Json.h"

namespace zeb {

namespace {

constexpr int kPart = 100;  // services that are asked for at a time
constexpr Duration kWatchTurn = std::chrono::seconds(1);
constexpr char kClearScreen[] = "\x1b[H\x1b[2J\x1b[3J";

int Fail(const CommandPorts& ports, const PublisherLink::Reply& reply) {
  ports.err << "zebctl: " << reply.problem << std::endl;
  return reply.notRunning ? kNotRunning : 1;
}

std::string TextFor(const boost::json::value& all, bool json) {
  return json ? boost::json::serialize(all) + "\n" : StatusTable(all);
}

// What follows on a terminal takes the place of what was there; elsewhere it is written when it is another.
int Watch(const CommandPorts& ports, PublisherLink& link, bool json) {
  std::string known;
  while (ports.out) {
    boost::json::object all;
    const PublisherLink::Reply reply = AskServices(link, all);
    // The moment of the answer alone is no news.
    const boost::json::value stations = reply.Done() ? all.at("services") : boost::json::value(reply.problem);
    const std::string news = boost::json::serialize(stations);
    if (ports.terminal || news != std::exchange(known, news)) {
      if (ports.terminal && !json) ports.out << kClearScreen;
      if (reply.Done())
        ports.out << TextFor(std::move(all), json) << std::flush;
      else if (!json)
        ports.out << "zebctl: " << reply.problem << std::endl;
    }
    ports.loop.Wait(kWatchTurn);
  }
  return 1;
}

}  // namespace

PublisherLink::Reply AskServices(PublisherLink& link, boost::json::object& all) {
  for (int from = 1;; from += kPart) {
    PublisherLink::Reply reply =
        link.Ask("GET", "/api/v1/services?from=" + std::to_string(from) + "&count=" + std::to_string(kPart));
    if (!reply.Done()) return reply;
    Result<boost::json::object> part = ReadJsonObject(reply.body);
    boost::json::value* services = part ? part.Value().if_contains("services") : nullptr;
    if (!services || !services->is_array()) {
      reply.status = 0;
      reply.problem = "the publisher's answer is no list of services";
      return reply;
    }
    const std::size_t count = services->as_array().size();
    if (from == 1) {
      all = std::move(part.Value());
    } else {
      boost::json::array& list = all.at("services").as_array();
      for (boost::json::value& one : services->as_array()) list.push_back(std::move(one));
    }
    if (count < static_cast<std::size_t>(kPart)) return reply;
  }
}

int RunStatusCommand(const CommandPorts& ports, const StatusOptions& options) {
  PublisherLink link(ports.loop, ports.sockets, ports.folder);
  if (options.watch) return Watch(ports, link, options.json);
  boost::json::object all;
  const PublisherLink::Reply reply = AskServices(link, all);
  if (!reply.Done()) return Fail(ports, reply);
  const boost::json::value list(std::move(all));
  ports.out << TextFor(list, options.json) << std::flush;
  if (!ports.out) {
    ports.err << "zebctl: cannot write to standard output" << std::endl;
    return 1;
  }
  return SomethingFails(list) ? 1 : 0;
}

int RunUpdateCommand(const CommandPorts& ports, const UpdateOptions& options) {
  PublisherLink link(ports.loop, ports.sockets, ports.folder);
  const std::string target = options.service == 0
                                 ? "/api/v1/update"
                                 : "/api/v1/services/" + std::to_string(options.service) + "/update";
  const PublisherLink::Reply reply = link.Ask("POST", target);
  return reply.Done() ? 0 : Fail(ports, reply);
}

int RunReloadCommand(const CommandPorts& ports) {
  const PublisherLink::Reply reply = PublisherLink(ports.loop, ports.sockets, ports.folder).Reload();
  return reply.Done() ? 0 : Fail(ports, reply);
}

void RunByHandCommand(const CommandPorts& ports, const ByHandOptions& options,
                      std::function<void(int status)> finished) {
  if (options.way != ByHandOptions::Way::kLink) {
    PublisherLink link(ports.loop, ports.sockets, ports.folder);
    const SetRequest request = SetRequestOf(options.set, options.service);
    const PublisherLink::Reply reply = link.Ask("POST", request.target, request.body);
    if (reply.Done()) return finished(0);
    if (!reply.unreachable || options.way == ByHandOptions::Way::kPublisher)
      return finished(Fail(ports, reply));
    if (!reply.notRunning)
      ports.err << "zebctl: " << reply.problem << "; trying the control link" << std::endl;
  }
  RunSendCommand(
      ports.loop, ports.network, options.send, [](std::string&) { return false; }, ports.err,
      std::move(finished));
}

}  // namespace zeb
