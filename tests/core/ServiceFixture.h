// A service whose outputs and window write down what they are asked and told, on simulated time.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

#include "core/clsZEBService.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {

class ServiceTest : public ::testing::Test, protected ServiceEvents {
 protected:
  using Lines = std::vector<std::string>;

  // Writes "<second> <operation> <name>"; does what `during` says first.
  class RecordingOutput : public clsZEBTemplate {
   public:
    RecordingOutput(ServiceTest& test, std::string name)
        : clsZEBTemplate(test.ports_.environment), test_(test), name_(std::move(name)) {}

    bool StopOutput() override { return Do("stop"); }
    bool PrepareOutput(const SnapshotPtr&) override { return Do("prepare"); }
    bool UpdateOutput(const SnapshotPtr& snapshot) override {
      shown.push_back(snapshot->currentItem->ItemName);
      Do("update");
      problem_ = problem;
      return problem.empty();
    }
    bool FinishOutput(const SnapshotPtr&) override { return Do("finish"); }

    bool MayPass() const override { return mayPass; }

    std::map<std::string, std::function<void()>> during;  // by operation
    std::string problem;                                  // what its updates end with
    bool mayPass = true;
    std::vector<std::string> shown;  // titles

   protected:
    bool Do(const std::string& operation) {
      test_.Write(operation + " " + name_);
      if (const auto found = during.find(operation); found != during.end()) found->second();
      return true;
    }

   private:
    ServiceTest& test_;
    std::string name_;
  };

  class RecordingEncoder : public RecordingOutput, public ScriptCommandOutput {
   public:
    using RecordingOutput::RecordingOutput;
    void SendScriptCommand(const std::string& commandType, const std::string& text) override {
      Do("command " + commandType + " " + text + "to");
    }
  };

  class RecordingSerial : public RecordingOutput, public StringOutput {
   public:
    using RecordingOutput::RecordingOutput;
    bool SendString(const ServiceSnapshot&, const std::string& text) override {
      return Do("string " + text + "to");
    }
    bool SetTravelFlagActivated(const ServiceSnapshot&) override { return Do("travel on") && sends; }
    bool SetTravelFlagCleared(const ServiceSnapshot&) override { return Do("travel off") && sends; }
    bool sends = true;
  };

  template <class Kind = RecordingOutput>
  std::shared_ptr<Kind> Add(OutputType type, const std::string& name) {
    auto output = std::make_shared<Kind>(*this, name);
    service_.AddOutput(type, output);
    return output;
  }

  std::function<void()> Wait(Duration time) {
    return [this, time] { ports_.loop.Wait(time); };
  }

  void Start(std::function<void()> work) { ports_.loop.Start("test", std::move(work)); }
  void Update(OutputType type) {
    Start([this, type] { service_.UpdateOutputType(static_cast<std::int32_t>(type)); });
  }

  void Write(const std::string& line) { lines_.push_back(Moment() + " " + line); }
  std::string Moment() const {
    const Duration passed = ports_.loop.Monotonic() - started_;
    return std::to_string(passed / (writeMilliseconds_ ? Duration(std::chrono::milliseconds(1))
                                                       : Duration(std::chrono::seconds(1))));
  }
  void SetTitle(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    service_.SetCurrentItem(item);
  }
  // The lines since the last call.
  Lines Take() { return std::exchange(lines_, {}); }

  void Tell(const std::string& event) {
    if (writeEvents_) Write(event);
  }
  static std::string Place(int index, OutputType type) {
    return std::to_string(index) + " of type " + std::to_string(static_cast<int>(type));
  }
  void ServiceClosed() override { Tell("closed"); }
  void OutputUpdateStarting(int index, OutputType type) override { Tell("starting " + Place(index, type)); }
  void OutputUpdateUpdating(int index, OutputType type) override { Tell("updating " + Place(index, type)); }
  void OutputUpdateUpdated(int index, OutputType type) override { Tell("updated " + Place(index, type)); }
  void OutputUpdateFinished(int index, OutputType type) override { Tell("finished " + Place(index, type)); }
  void UpdateStarted() override { Tell("update started"); }
  void UpdateFinished() override { Tell("update finished"); }
  void UpdateThrough(const UpdateRecord& record) override {
    if (record.cause != UpdateCause::kInformation) return;
    records_.push_back(Moment() + " full '" + record.snapshot->currentItem->ItemName + "' " +
                       std::to_string(record.runs.size()) + (record.runs.size() == 1 ? " run, " : " runs, ") +
                       std::to_string(record.postponed) + " postponed");
  }
  void UpdateWaits(const UpdateRecord& record) override {
    records_.push_back(Moment() + " '" + record.snapshot->currentItem->ItemName + "' waits");
  }

  void TearDown() override { EXPECT_EQ(ports_.loop.TaskCount(), 0U); }

  bool writeEvents_ = false;
  bool writeMilliseconds_ = false;
  Lines records_;  // of full updates
  Lines lines_;
  TestEnvironment ports_;
  MonotonicTime started_ = ports_.loop.Monotonic();
  clsZEBService service_{ports_.environment, [](OutputType) { return OutputPtr(); }, *this};
};

}  // namespace zeb
