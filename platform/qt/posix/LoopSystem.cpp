#include "platform/qt/LoopSystem.h"

#include <time.h>

#include <QCoreApplication>

#include "platform/qt/posix/EpollDispatcher.h"

namespace zeb {

std::chrono::seconds PresentUtcOffset() {
  const time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  tm local{};
  localtime_r(&seconds, &local);
  return std::chrono::seconds(local.tm_gmtoff);
}

void SetPlainDispatcher() {
  QCoreApplication::setEventDispatcher(new EpollDispatcher());
}

}  // namespace zeb
