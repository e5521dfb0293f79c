// LocalSockets: stream sockets with a name in the file system, for programs on one machine. Who may open the
// name may connect: its access rights are all the protection there is.
//
// Connections are TcpConnections whose PeerAddress is "local" and PeerPort 0, with all that platform/Tcp.h
// says of them. Nothing here blocks.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Result.h"
#include "platform/Tcp.h"

namespace zeb {

inline constexpr char kLocalPeer[] = "local";

class LocalListener {
 public:
  virtual ~LocalListener() = default;  // as Close
  std::function<void(std::unique_ptr<TcpConnection>)> onConnection;

  // Makes the socket `path`, for its owner alone. One that a killed program has left is replaced; one that
  // somebody listens on stays, as does whatever is no socket: then it fails.
  virtual Outcome Listen(const std::string& path) = 0;
  // Lets the members of a group in too. When it fails everything stays as it was.
  virtual Outcome AdmitGroup(const std::string& group) = 0;
  // Removes the name, unless it is another program's by now. Connections stay.
  virtual void Close() = 0;
};

struct LocalLink {
  std::unique_ptr<TcpConnection> connection;  // null: `problem` says why, in one line
  bool nobodyListens = false;                 // the program that is looked for does not run
  std::string problem;
};

class LocalSockets {
 public:
  virtual ~LocalSockets() = default;
  virtual std::unique_ptr<LocalListener> MakeLocalListener() = 0;
  // The connection stands at once or not at all; bytes come when the loop runs on.
  virtual LocalLink ConnectLocal(const std::string& path) = 0;
};

}  // namespace zeb
