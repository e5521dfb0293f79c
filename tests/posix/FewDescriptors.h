// FewDescriptors: a low limit on the descriptors of this process, and what takes them, for as long as it
// lives.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <utility>
#include <vector>

namespace zeb {

class FewDescriptors {
 public:
  explicit FewDescriptors(rlim_t limit) : limit_(static_cast<int>(limit)) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit low{limit, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &low);
  }
  ~FewDescriptors() {
    GiveBack();
    setrlimit(RLIMIT_NOFILE, &before_);
  }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;

  // Of all that are free, the highest `left` stay so.
  void TakeAllBut(int left) {
    for (int one; (one = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) {
      if (one >= limit_ - left) {
        close(one);
        return;
      }
      taken_.push_back(one);
    }
  }
  void GiveBack() {
    for (const int one : std::exchange(taken_, {})) close(one);
  }

 private:
  int limit_;
  rlimit before_{};
  std::vector<int> taken_;
};

}  // namespace zeb
