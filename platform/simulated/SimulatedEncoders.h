// SimulatedEncoders: automation of encoders that write down what they are told.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/EncoderAutomation.h"

namespace zeb {

class SimulatedEncoders : public EncoderAutomation {
 public:
  // Shared with the encoders that are handed out, which may outlive this.
  struct State {
    std::vector<std::string> calls;  // "SendScript 0 TEXT Song", in order
    bool running = true;             // isEncoding, Started
    std::int32_t runState = 2;
    std::string failure;             // when set, every call fails with it
    std::vector<std::string> names;  // the agent's encoders
  };

  Result<std::unique_ptr<RealProducerEncoder>> CreateRealProducer() override;
  Result<std::unique_ptr<AsfEncoder>> CreateAsfEncoder() override;
  Result<std::unique_ptr<EncoderAgent>> CreateEncoderAgent(const std::string& computer) override;

  State& state() { return *state_; }

 private:
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace zeb
