#include <grp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "platform/qt/posix/QtLocalSockets.h"
#include "tests/platform/LocalSocketsContract.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

struct Real : QtFixture {
  QtLocalSockets sockets{loop};
  std::filesystem::path folder;

  Real() {
    std::string name = std::filesystem::temp_directory_path() / "zeb-local-XXXXXX";
    folder = mkdtemp(name.data());
  }
  ~Real() override { std::filesystem::remove_all(folder); }
  LocalSockets& Sockets() { return sockets; }
  std::string Path() { return folder / "zeb.socket"; }
  unsigned Mode(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0 ? info.st_mode & 07777u : 0u;
  }
  // What a killed program leaves.
  void LeaveSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
  }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Real, LocalSocketsContract, Real);

using QtLocalSocketsTest = Real;

TEST_F(QtLocalSocketsTest, OnlyTheOwnerIsLetInAndTheNameGoesAtTheEnd) {
  LocalServer server(sockets);
  const mode_t before = umask(0);
  ASSERT_TRUE(server.listener->Listen(Path()));
  umask(before);
  EXPECT_EQ(Mode(Path()), 0600u);
  server.listener.reset();
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(Path())));
}

TEST_F(QtLocalSocketsTest, AGroupIsAdmittedByName) {
  LocalServer server(sockets);
  ASSERT_TRUE(server.listener->Listen(Path()));
  EXPECT_EQ(server.listener->AdmitGroup("no-such-group").Reason(),
            "cannot admit the group 'no-such-group' to '" + Path() + "': there is no such group");
  EXPECT_EQ(Mode(Path()), 0600u);
  const group* mine = getgrgid(getegid());
  ASSERT_NE(mine, nullptr);
  const Outcome admitted = server.listener->AdmitGroup(mine->gr_name);
  EXPECT_TRUE(admitted) << admitted.Reason();
  EXPECT_EQ(Mode(Path()), 0660u);
}

TEST_F(QtLocalSocketsTest, ALeftOverIsReplacedAndWhatIsNoSocketStays) {
  LeaveSocket(Path());
  LocalServer server(sockets);
  const Outcome replaced = server.listener->Listen(Path());
  EXPECT_TRUE(replaced) << replaced.Reason();
  EXPECT_TRUE(sockets.ConnectLocal(Path()).connection);

  const std::string file = folder / "file", link = folder / "link";
  std::ofstream(file) << "kept";
  std::filesystem::create_symlink(file, link);
  for (const std::string& path : {file, link}) {
    LocalServer other(sockets);
    EXPECT_EQ(other.listener->Listen(path).Reason(),
              "cannot listen on '" + path + "': there is something else of that name");
  }
  EXPECT_EQ(std::filesystem::file_size(file), 4u);
  LocalServer nowhere(sockets);
  EXPECT_NE(nowhere.listener->Listen(folder / "missing" / "s").Reason().find("No such file"),
            std::string::npos);
}

TEST_F(QtLocalSocketsTest, ANameThatAnotherProgramHasTakenOverStays) {
  LocalServer first(sockets), second(sockets);
  ASSERT_TRUE(first.listener->Listen(Path()));
  std::filesystem::remove(Path());
  ASSERT_TRUE(second.listener->Listen(Path()));
  first.listener.reset();
  EXPECT_TRUE(sockets.ConnectLocal(Path()).connection);
}

TEST_F(QtLocalSocketsTest, ANameLongerThanTheSystemTakesWorks) {
  const std::filesystem::path deep = folder / std::string(100, 'd') / std::string(100, 'e');
  std::filesystem::create_directories(deep);
  const std::string path = deep / "zeb.socket";
  LocalServer server(sockets);
  const Outcome listening = server.listener->Listen(path);
  ASSERT_TRUE(listening) << listening.Reason();
  EXPECT_EQ(Mode(path), 0600u);
  LocalLink link = sockets.ConnectLocal(path);
  ASSERT_TRUE(link.connection) << link.problem;
  EXPECT_TRUE(Until([&] { return server.peers.size() == 1; }));
  server.listener.reset();
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(path)));
}

TEST_F(QtLocalSocketsTest, WhenDescriptorsRunOutConnectionsAreTakenLater) {
  LocalServer server(sockets);
  ASSERT_TRUE(server.listener->Listen(Path()));
  // One comes before, too, for the sanitizer's sake.
  MeetTimers();
  const LocalLink first = sockets.ConnectLocal(Path());
  ASSERT_TRUE(Until([&] { return server.peers.size() == 1; }));
  const LocalLink link = sockets.ConnectLocal(Path());
  ASSERT_TRUE(link.connection);
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const int firstFree = dup(0);
  close(firstFree);
  const rlimit none{static_cast<rlim_t>(firstFree), limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_FALSE(Until([&] { return server.peers.size() == 2; }, 100ms));
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_TRUE(Until([&] { return server.peers.size() == 2; }));
}

TEST_F(QtLocalSocketsTest, APeerThatDoesNotReadKeepsBytesUnsent) {
  LocalServer server(sockets);
  ASSERT_TRUE(server.listener->Listen(Path()));
  const LocalLink link = sockets.ConnectLocal(Path());
  ASSERT_TRUE(Until([&] { return server.peers.size() == 1; }));
  link.connection->onData = nullptr;
  TcpConnection& connection = *server.peers[0]->connection;
  connection.Send(std::string(20'000'000, 'x'));
  EXPECT_GT(connection.UnsentBytes(), 15'000'000u);
  EXPECT_TRUE(Until([&] { return connection.UnsentBytes() == 0; })) << "the client's end reads and drops";
}

}  // namespace
}  // namespace zeb
