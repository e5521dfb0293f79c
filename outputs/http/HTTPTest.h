// HTTPTest: whether an HTTP output's server is found and reached. No request is sent: whatever is behind the
// URL might take any for a title.
#pragma once

#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/test/OutputTest.h"

namespace zeb {

class HTTPTest : public OutputTest {
 public:
  HTTPTest(Environment& environment, const clsZEBHTTPOutput& output)
      : environment_(environment), target_(output.Target()) {}
  void Run(TestSteps& steps) override;

 private:
  Environment& environment_;
  const RequestTarget target_;
};

}  // namespace zeb
