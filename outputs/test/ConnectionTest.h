// ConnectionTest: the steps that every output on the network begins with: the server's name is looked up, it
// is reached, and where wanted it proves by TLS who it is. Nothing is sent.
#pragma once

#include <string>

#include "outputs/http/RequestExchange.h"
#include "outputs/test/OutputTest.h"
#include "platform/EventLoop.h"
#include "platform/Tcp.h"

namespace zeb {

// In a task. True when all of the steps went well. `what` is behind the address in the steps: " (the proxy)".
bool TestConnection(EventLoop& loop, Network& network, const RequestTarget& target, TestSteps& steps,
                    const std::string& what = "");

}  // namespace zeb
