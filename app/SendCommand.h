// SendCommand: `zebctl send`: logs on to a service as its controller, sends lines, logs off.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

struct SendOptions {
  std::string host = "127.0.0.1";
  std::uint16_t port = 6901;
  std::string name = "zebctl";
  std::vector<std::string> messages;  // without line ends; none: the lines of the input
};

inline constexpr std::size_t kMaxMessageBytes = 1024 * 1024;  // the service ends the connection above it

// Puts the input's next bytes, as they come, in place of `bytes`; false at its end. Called on a worker
// thread.
using InputReader = std::function<bool(std::string& bytes)>;

// Runs the command in a task and hands its exit status to `finished`, once: 0, 1 when it failed (one line on
// `err`), 2 when control is refused. Everything has then reached the service, which answers the log-off only
// after it has handled what came before. What the service sends back is written to `err`.
//
// The command may still be waiting for input when the connection breaks, so the program should end without
// joining worker threads. The references must outlive the loop's run.
void RunSendCommand(EventLoop& loop, Network& network, SendOptions options, InputReader input,
                    std::ostream& err, std::function<void(int status)> finished);

}  // namespace zeb
