#include "platform/SerialLineWatch.h"

#include <chrono>
#include <exception>
#include <utility>

#include "platform/WorkLane.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kInterval = 500ms;
constexpr Duration kLookLimit = 10s;

}  // namespace

struct SerialLineWatch::State : std::enable_shared_from_this<State> {
  State(EventLoop& givenLoop, Look givenLook, std::function<void(CommEvent)> givenTell)
      : loop(givenLoop), look(std::move(givenLook)), tell(std::move(givenTell)), lane(givenLoop) {}

  EventLoop& loop;
  Look look;
  std::function<void(CommEvent)> tell;
  WorkLane lane;
  std::optional<SerialLineState> before;
  bool looking = false;
  Timer timer;

  void Tick() {
    if (looking || lane.Hangs()) return;
    looking = true;
    loop.Start("look at a serial line", [self = shared_from_this()] {
      const auto found = self->lane.Run(self->look, kLookLimit);
      self->looking = false;
      const bool known = found && *found;
      if (known && self->before) self->TellOf(**found);
      if (known) self->before = **found;
      if (found && !*found && !self->before) self->timer.Stop();
    });
  }

  // What is told may be the reason to close the port, which ends the watch.
  void TellOf(const SerialLineState& now) {
    for (const CommEvent event : CommEventsBetween(*before, now))
      if (const auto telling = tell) telling(event);
  }
};

SerialLineWatch::SerialLineWatch(EventLoop& loop, Look look, std::function<void(CommEvent)> tell)
    : state_(std::make_shared<State>(loop, std::move(look), std::move(tell))) {
  state_->timer = loop.Every(kInterval, [weak = std::weak_ptr(state_)] {
    if (const auto state = weak.lock()) state->Tick();
  });
}

SerialLineWatch::~SerialLineWatch() {
  state_->timer.Stop();
  state_->tell = nullptr;
}

}  // namespace zeb
