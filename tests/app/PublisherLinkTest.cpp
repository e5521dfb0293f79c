// A command's way to the publisher, with one that takes requests and says nothing.
#include <gtest/gtest.h>

#include <vector>

#include "app/PublisherLink.h"
#include "platform/simulated/SimulatedNetwork.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

TEST(PublisherLinkTest, APublisherThatHangsIsWaitedForSoLongAndNoLonger) {
  SimulatedLoop loop;
  SimulatedNetwork network(loop);
  std::vector<std::unique_ptr<TcpConnection>> taken;
  const auto listener = network.MakeLocalListener();
  listener->onConnection = [&](std::unique_ptr<TcpConnection> peer) { taken.push_back(std::move(peer)); };
  ASSERT_TRUE(listener->Listen("/data/zeb.socket"));
  const struct {
    const char* method;
    Duration limit;
    const char* problem;
  } cases[] = {
      {"GET", PublisherLink::kAtOnce, "the publisher does not answer: it hangs or is busy"},
      {"POST", PublisherLink::kWork,
       "the publisher does not answer: it hangs or is busy; it may still do what was asked"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.method);
    PublisherLink::Reply reply;
    bool ended = false;
    const MonotonicTime began = loop.Monotonic();
    loop.Start("asking", [&] {
      reply = PublisherLink(loop, network, kSimulatedDataFolder)
                  .Ask(one.method, "/api/v1/services", "", one.limit);
      ended = true;
    });
    ASSERT_TRUE(loop.RunUntil([&] { return ended; }, std::chrono::minutes(1)));
    EXPECT_EQ(loop.Monotonic() - began, one.limit);
    EXPECT_EQ(reply.problem, one.problem);
    EXPECT_FALSE(reply.unreachable);
  }
}

}  // namespace
}  // namespace zeb
