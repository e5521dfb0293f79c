// QtLoop: the EventLoop of the real programs, on Qt's event loop.
//
// Made by the main program after its QCoreApplication and destroyed before it. Events of Qt's own (windows,
// sockets) run beside what is given to this class; after each turn the tasks whose condition has come true go
// on. What a callback throws is caught here and reported as a task's failure would be, for it must not unwind
// through Qt.
//
// Blocking work is done by a WorkerPool. A thread that still hangs when the loop ends cannot be stopped: it
// is left behind after half a second, with what its work owns.
#pragma once

#include <functional>
#include <memory>

#include "platform/EventLoop.h"

namespace zeb {

class WorkerPool;

class QtLoop : public EventLoop {
 public:
  QtLoop();
  ~QtLoop() override;

  // To be called before the QCoreApplication of a program without windows is made: takes an EpollDispatcher
  // in place of Qt's own, or GLib's, with which busy sockets keep timers waiting.
  static void ChoosePlainDispatcher();
  // The same for a program with windows, whose events an EpollDispatcher does not know: Qt's own, not GLib's.
  static void ChooseWindowDispatcher();

  // Does the work of an event that came through Qt as this class does its own: what it throws is reported,
  // and the tasks that waited for what it did go on.
  void HandleEvent(const std::function<void()>& work) noexcept;

  // Does `work` on a thread and `done` on the loop's afterwards, unless the loop has ended. For name servers,
  // which may hang for minutes: these threads are not those of RunBlocking, so files do not wait for them.
  void LookUp(std::function<void()> work, std::function<void()> done);

  int Run();            // until Quit; its exit code
  void Quit(int code);  // also before Run, which then ends at once

  WallTime Now() const override;
  MonotonicTime Monotonic() const override;
  std::chrono::seconds UtcOffset() const override;
  Timer After(Duration delay, std::function<void()> work) override;
  Timer Every(Duration interval, std::function<void()> work) override;
  void Post(std::function<void()> work) override;
  void PostFromAnyThread(std::function<void()> work) override;

 protected:
  void Offload(std::function<void()> work, std::function<void()> done) override;

 private:
  struct State;
  void RunPosted();
  void RunTimers();
  void ArmTimer();
  void OffloadTo(WorkerPool& pool, std::function<void()> work, std::function<void()> done);
  void RelieveWorkers();
  void Call(const std::function<void()>& work) noexcept;

  std::unique_ptr<State> state_;
};

}  // namespace zeb
