// ThreadWake: what one thread sleeps on until another calls it. Private to WorkerPool.
//
// The system's semaphore: a condition variable costs a further call to the system at each wake, for its
// mutex.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include <semaphore.h>
#include <time.h>

#include <cerrno>
#endif
#include <chrono>

namespace zeb {

#ifdef _WIN32
class ThreadWake {
 public:
  ThreadWake() : semaphore_(CreateSemaphoreW(nullptr, 0, 1 << 20, nullptr)) {}
  ~ThreadWake() { CloseHandle(semaphore_); }
  ThreadWake(const ThreadWake&) = delete;
  ThreadWake& operator=(const ThreadWake&) = delete;

  void Call() { ReleaseSemaphore(semaphore_, 1, nullptr); }

  bool Await(std::chrono::seconds limit) {
    const auto milliseconds = std::chrono::milliseconds(limit).count();
    return WaitForSingleObject(semaphore_, static_cast<DWORD>(milliseconds)) == WAIT_OBJECT_0;
  }

 private:
  HANDLE semaphore_;
};
#else
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
#endif

}  // namespace zeb
