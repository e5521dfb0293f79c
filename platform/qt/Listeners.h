// Where the listening sockets of a QtNetwork come from. Private to platform/qt; posix/ and windows/ each have
// an implementation.
#pragma once

#include <memory>

#include "platform/Tcp.h"

namespace zeb {

struct QtNetworkState;

std::unique_ptr<TcpListener> MakeSocketListener(std::shared_ptr<QtNetworkState> network);

}  // namespace zeb
