#include "platform/simulated/SimulatedFtp.h"
#include "tests/platform/FtpContract.h"

namespace zeb {
namespace {

struct Replacing : testing::Test {
  SimulatedFtp sessions;
  FtpTarget target;
  const std::string folder = "/w/";
};
struct Strict : Replacing {
  Strict() { sessions.replaces = false; }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Simulated, FtpContract, Replacing);
INSTANTIATE_TYPED_TEST_SUITE_P(SimulatedStrict, FtpContract, Strict);

}  // namespace
}  // namespace zeb
