// SerialTest: whether a serial output's port is there and can be opened. Not while the output has it open: a
// port belongs to one at a time.
#pragma once

#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/test/OutputTest.h"

namespace zeb {

class SerialTest : public OutputTest {
 public:
  SerialTest(Environment& environment, const clsZEBSerialOutput& output)
      : environment_(environment), line_(output.Line()), inUse_(output.HasPort()), lane_(environment.loop) {}
  void Run(TestSteps& steps) override;

 private:
  Outcome LookForDevice();
  Outcome TryToOpen();

  Environment& environment_;
  const SerialPortControl::Line line_;
  const bool inUse_;
  WorkLane lane_;
};

}  // namespace zeb
