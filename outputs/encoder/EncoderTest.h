// EncoderTest: whether an encoder output's streaming server is found and reached and, of an Icecast, whether
// the mount has a source. The password is not tried: servers ask for it only with a title.
#pragma once

#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/test/OutputTest.h"

namespace zeb {

class EncoderTest : public OutputTest {
 public:
  EncoderTest(Environment& environment, const clsZEBEncoderOutput& output)
      : environment_(environment), settings_(output.settings), target_(output.Target()) {}
  void Run(TestSteps& steps) override;

 private:
  void LookAtStatusPage(TestSteps& steps);

  Environment& environment_;
  const EncoderSettings settings_;
  const RequestTarget target_;
};

}  // namespace zeb
