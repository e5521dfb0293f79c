// QtLocalSockets: Unix domain sockets, watched by a QtLoop's dispatcher. Sockets may outlive this object,
// though not the loop.
//
// A name longer than the 107 bytes that the system takes is reached through its folder's descriptor.
#pragma once

#include <memory>
#include <string>

#include "platform/EventLoop.h"
#include "platform/LocalSockets.h"

namespace zeb {

class LocalStream;
struct LocalStreams;

class QtLocalSockets : public LocalSockets {
 public:
  explicit QtLocalSockets(EventLoop& loop);
  ~QtLocalSockets() override;
  std::unique_ptr<LocalListener> MakeLocalListener() override;
  LocalLink ConnectLocal(const std::string& path) override;

 private:
  std::shared_ptr<LocalStreams> streams_;
};

}  // namespace zeb
