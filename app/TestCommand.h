// TestCommand: `zebctl test`: the test of one output (outputs/test/OutputTest.h), by the publisher that runs
// on the data folder, or by this program when none does.
#pragma once

#include <optional>
#include <vector>

#include "core/OutputName.h"
#include "outputs/test/OutputTest.h"
#include "platform/Environment.h"
#include "platform/Result.h"

namespace zeb {

struct CommandPorts;

struct TestOptions {
  int service = 0;
  OutputName output;
};

using TestResult = Result<std::vector<TestStep>>;

// In a task. Nothing: no publisher runs.
std::optional<TestResult> AskForTest(const CommandPorts& ports, const TestOptions& options);
// In a task. The output is tried as it is stored.
TestResult TestStoredOutput(Environment& environment, const TestOptions& options);
// One line a step. The exit status: 0, or 1 when a step failed or there was no test.
int TellTest(const CommandPorts& ports, const TestResult& result);

}  // namespace zeb
