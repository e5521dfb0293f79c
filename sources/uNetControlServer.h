// uNetControlServer: the server side of the network control component: a line protocol over TCP in which one
// client at a time may be the controller.
//
// At most 32 connections have a place. When all are taken, one that has been without control for 30 s makes
// room for the next; when all are newer, the latest to come is kept waiting beyond them for 5 s, and gets a
// place by taking control. So connections that do nothing never keep the playout system out. A log-on with
// the controller's own name from its own address takes control over at once: the old connection is dead.
//
// Owned by the service window. It knows nothing of items: it hands the controller's lines on. An event may
// close or destroy the server. Destroying it raises no events.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Environment.h"
#include "platform/Result.h"

namespace zeb {

class uNetControlServer {
 public:
  struct Events {
    std::function<void(const std::string& controller)> ControllerTookControl;
    std::function<void()> ControlEnded;
    std::function<void(int connectionIndex, std::string_view line)> MessageFromController;
    std::function<std::string()> HelpText;    // lines ended by CR LF
    std::function<std::string()> StatusText;  // likewise
    std::function<std::string()> ServiceName;
  };

  uNetControlServer(Environment& environment, Events events);
  ~uNetControlServer();

  // Listens on the port, at the bind address of the root settings, and reads who may connect. Already
  // listening just there, it only reads the latter anew. Every failure is one journal line, but not the same
  // one again and again.
  Outcome Listen(std::uint16_t port);
  void Close();  // ends control and every connection; allowed from inside an event
  bool Listening() const;
  // Why it does not listen where it was last told to; no failure while it does, or was told to close.
  Outcome ListenState() const;
  std::uint16_t Port() const;
  int ConnectionCount() const;
  std::string ControllerName() const;  // "" when there is none

  // A line to the controller; lost when there is none.
  void SendToController(std::string_view line);

 private:
  struct State;
  std::shared_ptr<State> state_;  // its own handlers hold it while they run
};

}  // namespace zeb
