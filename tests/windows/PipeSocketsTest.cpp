#include <windows.h>

#include <string>

#include "platform/qt/windows/PipeSockets.h"
#include "tests/platform/LocalSocketsContract.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

struct Pipes : QtFixture {
  PipeSockets sockets{loop};
  LocalSockets& Sockets() { return sockets; }
  static std::string Path() { return "C:\\zeb test\\" + std::to_string(GetCurrentProcessId()) + ".socket"; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Pipes, LocalSocketsContract, Pipes);

using PipeSocketsTest = Pipes;

TEST_F(PipeSocketsTest, APathHasOnePipeHoweverItIsWritten) {
  LocalServer server(sockets);
  ASSERT_TRUE(server.listener->Listen("C:\\Zeb Test\\A.socket"));
  EXPECT_TRUE(sockets.ConnectLocal("c:/zeb test/a.SOCKET").connection);
  EXPECT_TRUE(sockets.ConnectLocal("c:/zeb test/b.socket").nobodyListens);
}

// Whoever asks gets his answer, also when his question was there before anybody took the connection.
TEST_F(PipeSocketsTest, NoQuestionIsLost) {
  LocalServer server(sockets);
  ASSERT_TRUE(server.listener->Listen(Path()));
  for (std::size_t i = 0; i < 50; ++i) {
    LocalLink link = sockets.ConnectLocal(Path());
    ASSERT_TRUE(link.connection) << link.problem;
    link.connection->Send("question");
    ASSERT_TRUE(Until([&] {
      return server.peers.size() == i + 1 && server.peers[i]->received == "question";
    })) << i;
  }
}

}  // namespace
}  // namespace zeb
