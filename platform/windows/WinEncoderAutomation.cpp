#include "platform/windows/WinEncoderAutomation.h"

#include <utility>

#include "platform/windows/ComAutomation.h"

namespace zeb {
namespace {

constexpr const char* kRealProducerClass = "RealProducerControl.ProducerControl";
constexpr const char* kAsfEncoderClass = "Asf.RealTimeEncoder";
constexpr const char* kAgentClass = "WMEncAgt.WMEncoderAgent";

using ThreadPtr = std::shared_ptr<ComThread>;

// An object and the thread that it lives on, where it is also let go.
class Held {
 public:
  Held(ThreadPtr thread, ComObject object)
      : thread_(std::move(thread)), object_(std::make_shared<ComObject>(std::move(object))) {}
  Held(Held&&) = default;
  Held& operator=(Held&&) = delete;
  ~Held() {
    if (thread_) thread_->Later([object = std::move(object_)]() mutable { object.reset(); });
  }

  // `work` gets the object.
  template <class Work>
  auto Do(const Work& work) {
    return thread_->Do([&] { return work(*object_); });
  }
  const ThreadPtr& Thread() const { return thread_; }

 private:
  ThreadPtr thread_;
  std::shared_ptr<ComObject> object_;
};

class Producer : public RealProducerEncoder {
 public:
  explicit Producer(Held held) : held_(std::move(held)) {}
  Result<bool> IsEncoding() override {
    return held_.Do([](const ComObject& encoder) { return encoder.Flag("isEncoding"); });
  }
  Outcome SendRealMediaEvent(std::int32_t kind, const std::string& text) override {
    return held_.Do([&](const ComObject& encoder) {
      return encoder.Call("SendRealMediaEvent", {kind, text});
    });
  }

 private:
  Held held_;
};

class Asf : public AsfEncoder {
 public:
  explicit Asf(Held held) : held_(std::move(held)) {}
  Result<bool> Started() override {
    return held_.Do([](const ComObject& encoder) { return encoder.Flag("Started"); });
  }
  Outcome LoadASD(const std::string& fileName) override {
    return held_.Do([&](const ComObject& encoder) { return encoder.Call("LoadASD", {fileName}); });
  }
  Outcome SendScript(const std::string& commandType, const std::string& text) override {
    return held_.Do([&](const ComObject& encoder) {
      return encoder.Call("SendScript", {commandType, text});
    });
  }

 private:
  Held held_;
};

class MediaEncoder : public WindowsMediaEncoder {
 public:
  explicit MediaEncoder(Held held) : held_(std::move(held)) {}
  Result<std::int32_t> RunState() override {
    return held_.Do([](const ComObject& encoder) { return encoder.Number("RunState"); });
  }
  Outcome SendScript(std::int32_t index, const std::string& commandType, const std::string& text) override {
    return held_.Do([&](const ComObject& encoder) {
      return encoder.Call("SendScript", {index, commandType, text});
    });
  }

 private:
  Held held_;
};

class Agent : public EncoderAgent {
 public:
  explicit Agent(Held held) : held_(std::move(held)) {}
  Result<std::vector<std::string>> EncoderNames() override {
    return held_.Do([](const ComObject& agent) { return agent.Texts("EncoderNames"); });
  }
  Result<std::unique_ptr<WindowsMediaEncoder>> Encoder(const std::string& name) override {
    auto found = held_.Do([&](const ComObject& agent) {
      return agent.Object("Encoder", {name}, agent.Name() + ", encoder '" + name + "'");
    });
    if (!found) return found.AsFailure();
    return std::unique_ptr<WindowsMediaEncoder>(
        std::make_unique<MediaEncoder>(Held(held_.Thread(), std::move(found.Value()))));
  }

 private:
  Held held_;
};

template <class Port, class Made>
Result<std::unique_ptr<Port>> Create(ComThreads& threads, const char* progId, const std::string& computer) {
  auto thread = threads.Begin();
  if (!thread) return thread.AsFailure();
  auto object = thread.Value()->Do([&] { return ComObject::CreateByProgId(progId, computer); });
  if (!object) return object.AsFailure();
  return std::unique_ptr<Port>(
      std::make_unique<Made>(Held(std::move(thread.Value()), std::move(object.Value()))));
}

}  // namespace

Result<std::unique_ptr<RealProducerEncoder>> WinEncoderAutomation::CreateRealProducer() {
  return Create<RealProducerEncoder, Producer>(threads_, kRealProducerClass, "");
}

Result<std::unique_ptr<AsfEncoder>> WinEncoderAutomation::CreateAsfEncoder() {
  return Create<AsfEncoder, Asf>(threads_, kAsfEncoderClass, "");
}

Result<std::unique_ptr<EncoderAgent>> WinEncoderAutomation::CreateEncoderAgent(const std::string& computer) {
  return Create<EncoderAgent, Agent>(threads_, kAgentClass, computer);
}

}  // namespace zeb
