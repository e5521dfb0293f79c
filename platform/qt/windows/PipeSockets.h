// PipeSockets: the local sockets of Windows: named pipes, which only the user that made them (and
// administrators) may open. The pipe of a path has the path's digest for its name.
#pragma once

#include <memory>

#include "platform/EventLoop.h"
#include "platform/LocalSockets.h"

namespace zeb {

struct PipeStreams;

class PipeSockets : public LocalSockets {
 public:
  explicit PipeSockets(EventLoop& loop);
  ~PipeSockets() override;
  std::unique_ptr<LocalListener> MakeLocalListener() override;
  LocalLink ConnectLocal(const std::string& path) override;

 private:
  std::shared_ptr<PipeStreams> streams_;
};

}  // namespace zeb
