// ThreadWake: what one thread sleeps on until another calls it. Private to WorkerPool.
//
// The system's semaphore: a condition variable costs a further call to the system at each wake, for its
// mutex.
#pragma once

#include <semaphore.h>
#include <time.h>

#include <cerrno>
#include <chrono>

namespace zeb {

class ThreadWake {
 public:
  ThreadWake() { sem_init(&semaphore_, 0, 0); }
  ~ThreadWake() { sem_destroy(&semaphore_); }
  ThreadWake(const ThreadWake&) = delete;
  ThreadWake& operator=(const ThreadWake&) = delete;

  void Call() { sem_post(&semaphore_); }

  // Until one call, which counts also when it came before; false when `limit` passed first.
  bool Await(std::chrono::seconds limit) {
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += limit.count();
    int outcome = 0;
    do outcome = sem_clockwait(&semaphore_, CLOCK_MONOTONIC, &end);
    while (outcome != 0 && errno == EINTR);
    return outcome == 0;
  }

 private:
  sem_t semaphore_;
};

}  // namespace zeb
