// A service with its board and real outputs on simulated ports, told of what happens as the service window
// tells it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/clsZEBService.h"
#include "outputs/OutputTable.h"
#include "platform/simulated/SimulatedFtp.h"
#include "platform/simulated/SimulatedSerialPort.h"
#include "platform/simulated/TestEnvironment.h"
#include "status/StationBoard.h"

namespace zeb {

class BoardTest : public testing::Test, protected ServiceEvents {
 protected:
  BoardTest() {
    t.environment.ftp = &ftp;
    t.environment.serialPorts = &ports;
    EXPECT_TRUE(t.files.CreateFolders("/w"));
    t.files.Put("/t/now", "<ZEB_NOW_ITEMNAME>\n-\n");
    service.settings.ServiceName = "Demo FM";
  }
  void TearDown() override {
    service.BeginStopping();
    service.ClearService();
    t.loop.RunFor(std::chrono::minutes(2));
  }
  void OutputStarted(int index, OutputType type) override { board.OutputChanged(type, index); }
  void OutputUpdateStarting(int index, OutputType type) override { board.OutputChanged(type, index); }
  void OutputUpdateFinished(int index, OutputType type) override { board.OutputChanged(type, index); }
  void OutputRunEnded(const UpdateRecord& record, const UpdateRun& run) override {
    board.RunEnded(record, run);
  }

  template <class Output>
  std::shared_ptr<Output> Make(OutputType type) {
    return std::dynamic_pointer_cast<Output>(makeOutput(type));
  }
  // Adds and starts it.
  void Add(OutputType type, const OutputPtr& output) {
    const int index = service.AddOutput(type, output);
    service.StartOutput(type, index, MakeControl(t.environment, type));
    t.loop.RunFor(std::chrono::milliseconds(10));
  }
  static clsFileParameters Pair(const std::string& destination) {
    clsFileParameters pair;
    pair.SetSourceFileName("/t/now");
    pair.SetDestinationFileName(destination);
    pair.AddNoCache = false;
    return pair;
  }
  // New information that came 1.5 s ago, as it is published by default.
  void Publish(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    item.Edit().ItemType = 7;
    service.SetCurrentItem(item);
    service.NoteInformationMoment(t.loop.Monotonic() - std::chrono::milliseconds(1500));
    service.UpdateOutputs(true);
    board.Changed();
  }
  OutputState Output(std::size_t place = 0) const { return board.State().outputs.at(place); }
  // What an output has shown last, pages by their first lines.
  static std::string TextOf(const OutputState& state) {
    std::string text = state.shown.text;
    for (const Shown::Page& page : state.shown.pages) text += FirstLines(page.beginning);
    return text;
  }

  TestEnvironment t;
  SimulatedFtp ftp;
  SimulatedSerialPorts ports{t.loop};
  OutputFactory makeOutput = MakeOutputFactory(t.environment);
  clsZEBService service{t.environment, makeOutput, *this};
  std::string panel;
  StationBoard board{service,
                     {[] {
                        return SourceState{SourceState::Kind::kControlLink, true, "port 6901", "playout"};
                      },
                      [this](Panel) -> const std::string& { return panel; }}};
};

}  // namespace zeb
