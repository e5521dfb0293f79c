// WinPower: keeps this computer and its screen awake.
#pragma once

#include "platform/PowerRequest.h"

namespace zeb {

// On the thread that ends it too: the system takes such a request from a thread.
class WinPower : public PowerRequest {
 public:
  ~WinPower() override;
  void StayAwake(const std::string& why, std::function<void(const std::string& reason)> refused) override;
};

}  // namespace zeb
