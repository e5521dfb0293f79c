#include "platform/WorkLane.h"

namespace zeb {

void WorkLane::State::ComeBack() {
  if (!hangs) {
    cameBack = true;  // it had not even begun
    return;
  }
  hangs = false;
  if (const auto work = std::exchange(whenBack, nullptr)) work();
}

void WorkLane::State::LimitPassed() {
  hangs = !std::exchange(cameBack, false);
}

}  // namespace zeb
