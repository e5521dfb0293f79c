#include "platform/simulated/SimulatedEncoders.h"

namespace zeb {
namespace {

using State = SimulatedEncoders::State;

void HangIfTold(const State& state) {
  if (state.hangs) state.loop.WaitUntil([&state] { return !state.hangs; }, std::chrono::hours(1));
}

Outcome Record(State& state, std::string call) {
  HangIfTold(state);
  if (!state.failure.empty()) return Failure{state.failure};
  state.calls.push_back(std::move(call));
  return {};
}

template <class T>
Result<T> Asked(const State& state, const T& value) {
  HangIfTold(state);
  const std::string& failure = state.failure.empty() ? state.stateFailure : state.failure;
  if (!failure.empty()) return Failure{failure};
  return value;
}

class Part {
 public:
  explicit Part(std::shared_ptr<State> state) : state_(std::move(state)) {}

 protected:
  std::shared_ptr<State> state_;
};

class Producer : public RealProducerEncoder, private Part {
 public:
  using Part::Part;
  Result<bool> IsEncoding() override { return Asked(*state_, state_->running); }
  Outcome SendRealMediaEvent(std::int32_t kind, const std::string& text) override {
    return Record(*state_, "SendRealMediaEvent " + std::to_string(kind) + " " + text);
  }
};

class Asf : public AsfEncoder, private Part {
 public:
  using Part::Part;
  Result<bool> Started() override { return Asked(*state_, state_->running); }
  Outcome LoadASD(const std::string& fileName) override { return Record(*state_, "LoadASD " + fileName); }
  Outcome SendScript(const std::string& commandType, const std::string& text) override {
    return Record(*state_, "SendScript " + commandType + " " + text);
  }
};

class MediaEncoder : public WindowsMediaEncoder, private Part {
 public:
  using Part::Part;
  Result<std::int32_t> RunState() override { return Asked(*state_, state_->runState); }
  Outcome SendScript(std::int32_t index, const std::string& commandType, const std::string& text) override {
    return Record(*state_, "SendScript " + std::to_string(index) + " " + commandType + " " + text);
  }
};

class Agent : public EncoderAgent, private Part {
 public:
  using Part::Part;
  Result<std::vector<std::string>> EncoderNames() override { return Asked(*state_, state_->names); }
  Result<std::unique_ptr<WindowsMediaEncoder>> Encoder(const std::string& name) override {
    const Outcome recorded = Record(*state_, "Encoder " + name);
    if (!recorded) return recorded.AsFailure();
    return std::unique_ptr<WindowsMediaEncoder>(std::make_unique<MediaEncoder>(state_));
  }
};

}  // namespace

Result<std::unique_ptr<RealProducerEncoder>> SimulatedEncoders::CreateRealProducer() {
  HangIfTold(*state_);
  if (!state_->failure.empty()) return Failure{state_->failure};
  ++state_->made;
  return std::unique_ptr<RealProducerEncoder>(std::make_unique<Producer>(state_));
}

Result<std::unique_ptr<AsfEncoder>> SimulatedEncoders::CreateAsfEncoder() {
  HangIfTold(*state_);
  if (!state_->failure.empty()) return Failure{state_->failure};
  ++state_->made;
  return std::unique_ptr<AsfEncoder>(std::make_unique<Asf>(state_));
}

Result<std::unique_ptr<EncoderAgent>> SimulatedEncoders::CreateEncoderAgent(const std::string& computer) {
  const Outcome recorded = Record(*state_, "Agent on " + computer);
  if (!recorded) return recorded.AsFailure();
  ++state_->made;
  return std::unique_ptr<EncoderAgent>(std::make_unique<Agent>(state_));
}

}  // namespace zeb
