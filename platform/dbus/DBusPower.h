// DBusPower: the system stays awake by logind's inhibitor, and the screen on by the session's screen saver
// service. The system lets go of both when the process ends, however it does.
//
// Nothing here waits: a bus that is missing or hangs is told when it is known.
#pragma once

#include <QObject>
#include <memory>

#include "platform/EventLoop.h"
#include "platform/PowerRequest.h"

namespace zeb {

class DBusPower : public PowerRequest {
 public:
  explicit DBusPower(EventLoop& loop) : loop_(loop) {}  // the loop outlives it
  void StayAwake(const std::string& why, std::function<void(const std::string& reason)> refused) override;

 private:
  EventLoop& loop_;
  const std::shared_ptr<QObject> calls_ =
      std::make_shared<QObject>();  // what waits for an answer ends with it
};

}  // namespace zeb
