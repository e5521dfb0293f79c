// LabelServer: takes DAB labels over the label protocol and writes each service's label file.
//
// Owned by zeb-labelserver (or a test). One task a connection handles its lines in order; connections, lines
// and tries are bounded, so nobody who can reach the port can fill the memory.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "outputs/labels/LabelServices.h"
#include "platform/EventLoop.h"
#include "platform/FileSystem.h"
#include "platform/Operator.h"
#include "platform/Tcp.h"

namespace zeb {

class LabelServer {
 public:
  LabelServer(EventLoop& loop, Network& network, FileSystem& files, Operator& person,
              std::vector<LabelService> services);
  ~LabelServer();
  LabelServer(const LabelServer&) = delete;
  LabelServer& operator=(const LabelServer&) = delete;

  Outcome Listen(const std::string& address, std::uint16_t port);
  std::uint16_t Port() const;
  void Close();  // ends every connection; labels that are being written are still put in place
  std::size_t ConnectionCount() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace zeb
