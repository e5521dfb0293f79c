#include "app/RunningStations.h"

#include <utility>

#include "outputs/OutputTable.h"

namespace zeb {

RunningStations::RunningStations(Environment& environment, frmMain& main, std::function<void()> reload)
    : environment_(environment), main_(main), reload_(std::move(reload)) {
  main_.onChanged = [this](int number) {
    if (onChanged) onChanged(number);
  };
}

RunningStations::~RunningStations() {
  main_.onChanged = nullptr;
}

int RunningStations::Count() const {
  return main_.NumberServices();
}

StationState RunningStations::State(int number) const {
  StationState state = main_.Window(number)->Board().State();
  state.number = number;  // one that could not be opened knows none
  return state;
}

SnapshotPtr RunningStations::Present(int number) const {
  return main_.Window(number)->service().TakeSnapshot();
}

const ServiceSettings& RunningStations::Settings(int number) const {
  return main_.Window(number)->service().settings;
}

CartStore& RunningStations::Carts() {
  return environment_.carts;
}

void RunningStations::Take(int number, const std::string& message) {
  main_.Window(number)->SetZEBInformation(message);
}

void RunningStations::Update(int number) {
  main_.Window(number)->ForceUpdate();
}

void RunningStations::Reload() {
  reload_();
}

std::optional<Result<std::vector<TestStep>>> RunningStations::Test(int number, const OutputName& output) {
  const OutputPtr running = main_.Window(number)->service().Output(output.type, output.number);
  const std::unique_ptr<OutputTest> test =
      running ? MakeOutputTest(environment_, output.type, *running) : nullptr;
  if (!test) return std::nullopt;
  if (!tested_->insert(running).second) return Failure{"a test of " + output.Text() + " is under way"};
  const std::shared_ptr<void> ends(nullptr, [tested = tested_, running](void*) { tested->erase(running); });
  return StepsOf(environment_.loop, *test);
}

Outcome RunningStations::Remove(int number) {
  return main_.RemoveConfirmed(number);
}

}  // namespace zeb
