// WorkPlace: what a worker is waiting for just now, so that somebody can say so when it hangs. Written by the
// worker, read by the loop's thread at any time; shared by both.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace zeb {

class WorkPlace {
 public:
  struct Step {
    std::string what;  // "'/srv/www/now.html'"; "" before the first
    std::uint64_t number = 0;
  };

  void At(std::string what) {
    const std::lock_guard lock(mutex_);
    step_.what = std::move(what);
    ++step_.number;
  }
  void AtFile(std::string_view path) {
    const std::lock_guard lock(mutex_);
    step_.what.assign(1, '\'').append(path).append(1, '\'');
    ++step_.number;
  }

  Step Now() const {
    const std::lock_guard lock(mutex_);
    return step_;
  }

 private:
  mutable std::mutex mutex_;
  Step step_;
};

}  // namespace zeb
