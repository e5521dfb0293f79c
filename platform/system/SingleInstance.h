// SingleInstance: makes sure that only one publisher runs on a data folder.
//
// Holds a lock on the file zeb.lock in the folder for as long as it lives. The system drops the lock with the
// process, however that ends, so a file left behind by a killed process is no obstacle.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/Result.h"

namespace zeb {

class SingleInstance {
 public:
  // Null when another process (or object) holds the folder. Fails, naming the file, when it cannot tell.
  static Result<std::unique_ptr<SingleInstance>> Claim(const std::string& folder);
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

 private:
  explicit SingleInstance(std::intptr_t file) : file_(file) {}
  std::intptr_t file_;  // as the system names an open one
};

}  // namespace zeb
