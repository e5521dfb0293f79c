#include "platform/qt/LoopSystem.h"

#include <time.h>

#include <QCoreApplication>

#include "platform/qt/posix/EpollDispatcher.h"

namespace zeb {

// An update asks for it several times. It changes at the beginning of a second only.
std::chrono::seconds PresentUtcOffset() {
  thread_local time_t known = -1;
  thread_local std::chrono::seconds offset{};
  const time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  if (seconds == known) return offset;
  tm local{};
  localtime_r(&seconds, &local);
  known = seconds;
  offset = std::chrono::seconds(local.tm_gmtoff);
  return offset;
}

void SetPlainDispatcher() {
  QCoreApplication::setEventDispatcher(new EpollDispatcher());
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): Qt owns it from here on

}  // namespace zeb
