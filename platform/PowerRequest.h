// PowerRequest: asks the system to stay awake, and the screen on, for as long as this object lives.
//
// Owned by the program that publishes with windows. A system that does not take such a request is no failure
// of the program: `refused` is told once why, in one line, and everything else goes on.
#pragma once

#include <functional>
#include <string>

namespace zeb {

class PowerRequest {
 public:
  virtual ~PowerRequest() = default;  // takes the request back

  // Returns at once; the answers come later, on the loop's thread. `why` is for people who look who it is.
  virtual void StayAwake(const std::string& why, std::function<void(const std::string& reason)> refused) = 0;
};

}  // namespace zeb
