// SimulatedEncoders: automation of encoders that write down what they are told.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/EncoderAutomation.h"
#include "platform/EventLoop.h"

namespace zeb {

class SimulatedEncoders : public EncoderAutomation {
 public:
  explicit SimulatedEncoders(EventLoop& loop) : state_(std::make_shared<State>(State{loop})) {}

  // Shared with the encoders that are handed out, which may outlive this.
  struct State {
    EventLoop& loop;                      // which passes the time of a call that hangs
    std::vector<std::string> calls = {};  // "SendScript 0 TEXT Song", in order
    bool running = true;                  // isEncoding, Started
    std::int32_t runState = 2;
    std::string failure = {};             // when set, every call fails with it
    std::string stateFailure = {};        // when set, encoders that are asked how they are fail with it
    bool hangs = false;                   // every call, for as long as this is set
    int made = 0;                         // encoders and agents
    std::vector<std::string> names = {};  // the agent's encoders
  };

  Result<std::unique_ptr<RealProducerEncoder>> CreateRealProducer() override;
  Result<std::unique_ptr<AsfEncoder>> CreateAsfEncoder() override;
  Result<std::unique_ptr<EncoderAgent>> CreateEncoderAgent(const std::string& computer) override;

  State& state() { return *state_; }

 private:
  std::shared_ptr<State> state_;
};

}  // namespace zeb
