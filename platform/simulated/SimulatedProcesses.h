// SimulatedProcesses: programs that are not run but written down.
#pragma once

#include <string>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/Processes.h"

namespace zeb {

class SimulatedProcesses : public Processes {
 public:
  explicit SimulatedProcesses(EventLoop& loop) : loop_(loop) {}

  Outcome Run(const ProcessOrder& order) override {
    orders.push_back(order);
    ++running;
    mostRunning = mostRunning < running ? running : mostRunning;
    if (takes > Duration::zero()) loop_.Wait(takes);
    --running;
    return outcome;
  }

  std::vector<ProcessOrder> orders;
  Outcome outcome;   // of each
  Duration takes{};  // each
  int running = 0, mostRunning = 0;

 private:
  EventLoop& loop_;
};

}  // namespace zeb
