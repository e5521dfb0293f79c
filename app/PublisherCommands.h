// PublisherCommands: the commands of zebctl that look at the publisher of this machine or do something to it:
// `status`, `set`, `update`.
#pragma once

#include <boost/json/object.hpp>
#include <functional>
#include <ostream>
#include <string>
#include <variant>

#include "app/PublisherLink.h"
#include "app/SendCommand.h"
#include "app/SetCommand.h"
#include "app/StationCommands.h"
#include "app/StationSetup.h"
#include "app/TestCommand.h"
#include "platform/EventLoop.h"
#include "platform/LocalSockets.h"
#include "platform/Tcp.h"

namespace zeb {

struct StatusOptions {
  bool json = false;
  bool watch = false;  // goes on until it is interrupted
};

struct UpdateOptions {
  int service = 0;  // 0: all
};

// By the local socket where zebd runs here and that is possible, else by the control link.
struct ByHandOptions {
  enum class Way { kEither, kPublisher, kLink } way = Way::kEither;
  SetOptions set;
  int service = 1;
  SendOptions send;
};

struct ReloadOptions {};

struct PasswordOptions {};  // `dashboard password`

struct SupportOptions {
  std::string file;  // or the folder that it is to be put into
  std::string reason, reference;
  bool templates = false;
};

using PublisherOptions =
    std::variant<StatusOptions, UpdateOptions, ReloadOptions, ByHandOptions, PasswordOptions, StationOptions,
                 TestOptions, SupportOptions, SetupOptions>;

// What the commands work with. All outlives them.
struct CommandPorts {
  EventLoop& loop;
  LocalSockets& sockets;
  Network& network;
  std::string folder;  // the data folder
  bool terminal;       // `out` is one
  std::ostream& out;
  std::ostream& err;
};

inline constexpr int kNotRunning = 3;

// In a task. All services, in one list as GET /api/v1/services gives it.
PublisherLink::Reply AskServices(PublisherLink& link, boost::json::object& all);
// In a task. The exit status: 0 all is well, 1 something fails, 3 nothing runs on the data folder.
int RunStatusCommand(const CommandPorts& ports, const StatusOptions& options);
// In a task: 0, 1, or 3 when nothing runs.
int RunUpdateCommand(const CommandPorts& ports, const UpdateOptions& options);
// In a task, as above: the publisher reads the settings again.
int RunReloadCommand(const CommandPorts& ports);
// Hands the exit status to `finished`, once. `input` as RunSendCommand has it.
void RunByHandCommand(const CommandPorts& ports, const ByHandOptions& options,
                      std::function<void(int status)> finished);

}  // namespace zeb
