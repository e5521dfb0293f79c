#include "outputs/dab/DABTest.h"

#include <string>

#include "outputs/labels/LabelClient.h"
#include "outputs/test/ConnectionTest.h"

namespace zeb {

void DABTest::Run(TestSteps& steps) {
  if (!TestConnection(environment_.loop, environment_.network, {settings_.ServerName, port_, false}, steps))
    return;
  if (steps.HasTime()) steps.Add("log-on as '" + settings_.ServiceName + "'", TryLogOn());
}

Outcome DABTest::TryLogOn() {
  LabelClient client(environment_.network);
  EventLoop& loop = environment_.loop;
  const auto gotTo = [&](std::int32_t state) {
    loop.WaitUntil(
        [&] { return client.CurrentState() == state || client.CurrentState() <= DABClientControl::kClosing; },
        kTestStepLimit / 2);
    return client.CurrentState() == state;
  };
  if (client.Connect(settings_.ServerName, port_) && gotTo(DABClientControl::kConnected)) {
    client.LogOn(settings_.ServiceName, settings_.ServicePassword);
    if (gotTo(DABClientControl::kLoggedOn)) {
      client.Close();
      return {};
    }
  }
  const std::string why = client.LastError();
  client.Close();
  return Failure{why.empty() ? settings_.ServerName + " does not answer" : why};
}

}  // namespace zeb
