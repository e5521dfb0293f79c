// DABTest: whether a DAB output's label server is found and reached, and takes the log-on. No label is sent.
#pragma once

#include <cstdint>

#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/test/OutputTest.h"

namespace zeb {

class DABTest : public OutputTest {
 public:
  DABTest(Environment& environment, const clsZEBDABOutput& output)
      : environment_(environment), settings_(output.settings), port_(output.PortNumber()) {}
  void Run(TestSteps& steps) override;

 private:
  Outcome TryLogOn();

  Environment& environment_;
  const DABSettings settings_;
  const std::uint16_t port_;
};

}  // namespace zeb
