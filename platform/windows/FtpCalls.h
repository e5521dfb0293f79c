// FtpCalls: calls that block in the system for as long as it likes, made one after the other on a thread of
// their own, so that whoever waits for one can give up.
//
// Owned and used by one FTP session; Hurry comes from any thread. A thread whose call does not come back is
// left behind with all that the call owns.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace zeb {

class FtpCalls {
 public:
  using Clock = std::chrono::steady_clock;
  // Until when the present call may last; asked again after each Hurry.
  using Deadline = std::function<Clock::time_point()>;

  FtpCalls() = default;
  ~FtpCalls() { Renew(); }
  FtpCalls(const FtpCalls&) = delete;
  FtpCalls& operator=(const FtpCalls&) = delete;

  // What `call` gives; nothing when it is late, or the system has no thread for it. Then `interrupt` is
  // called here, which may make it end, and it is waited for a moment more; a call that still goes on is left
  // behind. `call` must own what it uses.
  template <class Call>
  auto Make(Call call, const Deadline& deadline, const std::function<void()>& interrupt)
      -> std::optional<decltype(call())> {
    const auto given = std::make_shared<std::optional<decltype(call())>>();
    const bool ended =
        Run([given, call = std::move(call)]() mutable { given->emplace(call()); }, deadline, interrupt);
    return ended ? std::move(*given) : std::nullopt;
  }
  // The next call is made on another thread.
  void Renew();
  // Does `work` on a thread that nobody waits for; not at all when the system has none.
  static void Apart(std::function<void()> work);
  // The deadline has changed.
  void Hurry();

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::function<void()> call;  // to be made, or being made
    bool ends = false;
  };
  bool Run(std::function<void()> call, const Deadline& deadline, const std::function<void()>& interrupt);
  bool Begin();
  static void Work(const std::shared_ptr<State>& state);

  std::mutex mutex_;              // guards state_ against Hurry
  std::shared_ptr<State> state_;  // the thread's; null: there is none
};

}  // namespace zeb
