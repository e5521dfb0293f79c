#include "platform/simulated/SimulatedLoop.h"
#include "platform/simulated/SimulatedNetwork.h"
#include "tests/platform/LocalSocketsContract.h"

namespace zeb {
namespace {

struct Simulated : testing::Test {
  SimulatedLoop loop;
  SimulatedNetwork network{loop};
  LocalSockets& Sockets() { return network; }
  std::string Path() { return "/data/zeb.socket"; }
  bool Until(const std::function<bool()>& condition) {
    return loop.RunUntil(condition, std::chrono::seconds(0));
  }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Simulated, LocalSocketsContract, Simulated);

}  // namespace
}  // namespace zeb
