#include <csignal>
#include <vector>

#include "platform/qt/ProgramSignals.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

using ProgramSignalsTest = QtFixture;

TEST_F(ProgramSignalsTest, SignalsBecomeEvents) {
  std::vector<ProgramSignal> taken;
  {
    const ProgramSignals listener(loop, [&](ProgramSignal signal) { taken.push_back(signal); });
    std::raise(SIGTERM);
    EXPECT_TRUE(taken.empty()) << "not from inside the handler";
    ASSERT_TRUE(Until([&] { return taken.size() == 1; }));
    std::raise(SIGHUP);
    std::raise(SIGINT);
    ASSERT_TRUE(Until([&] { return taken.size() == 3; }));
  }
  EXPECT_EQ(taken, (std::vector<ProgramSignal>{ProgramSignal::kStop, ProgramSignal::kReload,
                                               ProgramSignal::kInterrupt}));
  struct sigaction now {};
  sigaction(SIGTERM, nullptr, &now);
  EXPECT_EQ(now.sa_handler, SIG_DFL) << "the former action is back";
}

}  // namespace
}  // namespace zeb
