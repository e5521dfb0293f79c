#include "app/TestCommand.h"

#include <boost/json/array.hpp>
#include <memory>
#include <utility>

#include "app/PublisherCommands.h"
#include "app/PublisherLink.h"
#include "core/StoredServices.h"
#include "core/clsZEBService.h"
#include "dashboard/Json.h"
#include "outputs/OutputTable.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

constexpr std::size_t kMostShown = 1000;  // characters of a line

TestResult StepsIn(const std::string& body) {
  const Failure strange{"zebd answered something else than steps"};
  const auto object = ReadJsonObject(body);
  const auto* list = object ? object.Value().if_contains("steps") : nullptr;
  if (!list || !list->is_array()) return strange;
  std::vector<TestStep> steps;
  for (const auto& one : list->as_array()) {
    const auto* ok = one.is_object() ? one.as_object().if_contains("ok") : nullptr;
    if (!ok || !ok->is_bool()) return strange;
    Result<std::string> text = JsonText(one.as_object(), "text");
    if (!text) return text.AsFailure();
    steps.push_back({std::move(text.Value()), ok->as_bool(), ""});
  }
  return steps;
}

}  // namespace

std::optional<TestResult> AskForTest(const CommandPorts& ports, const TestOptions& options) {
  const std::string target = "/api/v1/services/" + std::to_string(options.service) + "/outputs/" +
                             std::string(NameOf(options.output.type)) + "/" +
                             std::to_string(options.output.number) + "/test";
  const PublisherLink::Reply reply =
      PublisherLink(ports.loop, ports.sockets, ports.folder).Ask("POST", target, "", PublisherLink::kWork);
  if (reply.notRunning) return std::nullopt;
  return reply.Done() ? StepsIn(reply.body) : TestResult(Failure{reply.problem});
}

TestResult TestStoredOutput(Environment& environment, const TestOptions& options) {
  const StoredServices stored(environment.hive, environment.settingsRoot);
  if (const Outcome there = stored.Check(options.service, options.output); !there) return there.AsFailure();
  ServiceEvents nobody;
  clsZEBService service(environment, MakeOutputFactory(environment), nobody);
  service.SetServiceNumber(options.service);
  const OutputPtr output = service.Output(options.output.type, options.output.number);
  const std::unique_ptr<OutputTest> test =
      output ? MakeOutputTest(environment, options.output.type, *output) : nullptr;
  if (!test) return Failure{"the settings of " + options.output.Text() + " cannot be read"};
  return StepsOf(environment.loop, *test);
}

int TellTest(const CommandPorts& ports, const TestResult& result) {
  if (!result) {
    ports.err << "zebctl: " << result.Reason() << std::endl;
    return 1;
  }
  bool ok = !result.Value().empty();
  for (const TestStep& step : result.Value()) {
    ports.out << (step.ok ? "✓ " : "✗ ") << OneLine(step.Text(), kMostShown) << '\n';
    ok = ok && step.ok;
  }
  ports.out.flush();
  return ok && ports.out ? 0 : 1;
}

}  // namespace zeb
