#include "outputs/encoder/AutomatedEncoder.h"

#include <utility>

#include "outputs/http/clsZEBHTTPOutput.h"
#include "text/LetterCase.h"

namespace zeb {
namespace {

constexpr std::int32_t kMetadataEvent = 2;
constexpr std::int32_t kFirstStream = 0;

Result<std::int32_t> OnOrOff(const Result<bool>& runs) {
  if (!runs) return runs.AsFailure();
  return std::int32_t{runs.Value() ? kStatusOK : kStatusOff};
}

std::int32_t StatusOfRunState(std::int32_t state) {
  switch (state) {
    case 1:
      return kStatusStarting;
    case 2:
      return kStatusOK;
    case 3:
      return kStatusPaused;
    case 4:
      return kStatusStopping;
    case 5:
      return kStatusStopped;
    default:
      return kStatusError;
  }
}

std::string AgentName(const std::string& computer) {
  return "the encoder agent on " + (computer.empty() ? "this computer" : "'" + computer + "'");
}

std::string NameOf(const EncoderSettings& settings) {
  switch (settings.EncoderType) {
    case kRealProducer:
      return "the RealProducer encoder";
    case kAsfEncoder:
      return "the ASF encoder";
    default:
      return AgentName(settings.WME7ComputerName);
  }
}

}  // namespace

// One kind of encoder; used by workers.
struct AutomatedEncoder::Driver {
  virtual ~Driver() = default;
  virtual Result<std::int32_t> Status() = 0;
  virtual Outcome Send(const EncoderCommand& command) = 0;
};

struct AutomatedEncoder::RealProducerDriver : Driver {
  explicit RealProducerDriver(std::unique_ptr<RealProducerEncoder> made) : encoder(std::move(made)) {}
  Result<std::int32_t> Status() override { return OnOrOff(encoder->IsEncoding()); }
  Outcome Send(const EncoderCommand& command) override {
    return encoder->SendRealMediaEvent(kMetadataEvent, command.value);
  }
  std::unique_ptr<RealProducerEncoder> encoder;
};

struct AutomatedEncoder::AsfDriver : Driver {
  explicit AsfDriver(std::unique_ptr<AsfEncoder> made) : encoder(std::move(made)) {}
  Result<std::int32_t> Status() override { return OnOrOff(encoder->Started()); }
  Outcome Send(const EncoderCommand& command) override {
    return encoder->SendScript(command.type, command.value);
  }
  std::unique_ptr<AsfEncoder> encoder;
};

struct AutomatedEncoder::MediaDriver : Driver {
  explicit MediaDriver(std::unique_ptr<WindowsMediaEncoder> made) : encoder(std::move(made)) {}
  Result<std::int32_t> Status() override {
    const Result<std::int32_t> state = encoder->RunState();
    if (!state) return state.AsFailure();
    return StatusOfRunState(state.Value());
  }
  Outcome Send(const EncoderCommand& command) override {
    return encoder->SendScript(kFirstStream, command.type, command.value);
  }
  std::unique_ptr<WindowsMediaEncoder> encoder;
};

// By a worker.
Result<AutomatedEncoder::DriverPtr> AutomatedEncoder::Make(EncoderAutomation& automation,
                                                           const EncoderSettings& settings) {
  if (settings.EncoderType == kRealProducer) {
    auto made = automation.CreateRealProducer();
    if (!made) return made.AsFailure();
    return DriverPtr(std::make_shared<RealProducerDriver>(std::move(made.Value())));
  }
  if (settings.EncoderType != kAsfEncoder) return MakeMediaDriver(automation, settings);
  auto made = automation.CreateAsfEncoder();
  if (!made) return made.AsFailure();
  const Outcome loaded = made.Value()->LoadASD(settings.ASDFileLocation);
  if (!loaded) return loaded.AsFailure();
  return DriverPtr(std::make_shared<AsfDriver>(std::move(made.Value())));
}

Result<AutomatedEncoder::DriverPtr> AutomatedEncoder::MakeMediaDriver(EncoderAutomation& automation,
                                                                      const EncoderSettings& settings) {
  auto agent = automation.CreateEncoderAgent(settings.WME7ComputerName);
  if (!agent) return agent.AsFailure();
  const auto names = agent.Value()->EncoderNames();
  if (!names) return names.AsFailure();
  const std::string wanted = LowerCase(settings.WME7StreamIDName);
  for (const std::string& name : names.Value()) {
    if (LowerCase(name) != wanted) continue;
    auto encoder = agent.Value()->Encoder(name);
    if (!encoder) return encoder.AsFailure();
    return DriverPtr(std::make_shared<MediaDriver>(std::move(encoder.Value())));
  }
  return Failure{AgentName(settings.WME7ComputerName) + " has no encoder '" + settings.WME7StreamIDName +
                 "'"};
}

template <class Work>
auto AutomatedEncoder::Call(const std::string& name, std::chrono::seconds limit, Work work)
    -> decltype(work()) {
  struct Count {
    explicit Count(int& number) : count(number) { ++count; }
    ~Count() { --count; }
    int& count;
  };
  if (Hangs()) return Failure{name + " has still not answered a call of before"};
  const Count waiting(calls_);
  auto given = lane_.Run(std::move(work), limit);
  if (given) return std::move(*given);
  return Failure{name + " did not answer within " + std::to_string(limit.count()) + " seconds"};
}

Outcome AutomatedEncoder::Start(EncoderAutomation& automation, const EncoderSettings& settings) {
  Drop();
  const Epoch::Mark mine = held_.Now();
  const std::string name = NameOf(settings);
  auto made = Call(name, kStartLimit, [&automation, settings] { return Make(automation, settings); });
  if (!made) return made.AsFailure();
  if (!mine.Holds()) return Failure{name + " was let go meanwhile"};
  driver_ = std::move(made.Value());
  name_ = name;
  return {};
}

Result<std::int32_t> AutomatedEncoder::Look() {
  if (!driver_) return Failure{"there is no encoder"};
  return Call(name_, kCallLimit, [driver = driver_] { return driver->Status(); });
}

Outcome AutomatedEncoder::Send(const EncoderCommand& command) {
  if (!driver_) return Failure{"there is no encoder"};
  return Call(name_, kCallLimit, [driver = driver_, command] { return driver->Send(command); });
}

void AutomatedEncoder::Drop() {
  held_.Next();
  driver_.reset();
}

}  // namespace zeb
