// Secrets: randomness that nobody can guess, and passwords kept so that reading them helps nobody.
//
// Owned by shared_ptr: a worker that still computes keeps it. All of it may be called from any thread.
#pragma once

#include <cstddef>
#include <string>

#include "platform/Result.h"

namespace zeb {

class Secrets {
 public:
  virtual ~Secrets() = default;

  // Letters and digits that can stand in a cookie, with 256 bits of randomness.
  virtual std::string RandomToken() = 0;
  // Slow, and takes much memory, on purpose: for worker threads. Fails when the memory is not there.
  virtual Result<std::string> HashPassword(const std::string& password) = 0;
  // As slow. False also for a hash that is none.
  virtual bool IsPassword(const std::string& hash, const std::string& password) = 0;
};

inline constexpr std::size_t kMostPasswordBytes = 1024;

}  // namespace zeb
