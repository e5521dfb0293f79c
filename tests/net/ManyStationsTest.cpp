// A zebd with a thousand stations and more: what it needs of the system, and what it does when that runs out.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <sstream>
#include <vector>

#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

constexpr int kUsualLimit = 1024;
constexpr int kMostThreads = 32;
// Above those that the system gives to whoever connects; no other test is there.
constexpr int kFirstPort = 61000;

class ManyStationsTest : public Station {
 protected:
  static std::string PageName(int number) { return "now" + std::to_string(number) + ".txt"; }
  int PortOf(int number) const { return 6900 + controls_.at(static_cast<std::size_t>(number) - 1); }

  // Stations 1 to `count`, each with one page and what `source` gives for its number.
  template <class Source>
  void AddStations(int count, Source source) {
    WriteFile(Path("page"), "<ZEB_NOW_ITEMNAME>");
    const std::string root = "[HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1";
    std::ostringstream settings;
    settings << "REGEDIT4\n\n" << root << "]\n\"NumberServices\"=dword:" << std::hex << count << "\n";
    for (int number = 1; number <= count; ++number)
      settings << std::dec << root << "\\Service" << number << "]\n\"ServiceName\"=\"Station " << number
               << "\"\n\"InstantUpdate\"=dword:1\n"
               << source(number) << root << std::dec << "\\Service" << number << "\\File]\n"
               << "\"NumberOutputs\"=\"1\"\n\"Output1.NumberFiles\"=\"1\"\n"
               << "\"Output1.SourceFileName1\"=\"page\"\n\"Output1.DestinationFileName1\"=\""
               << PageName(number) << "\"\n"
               << root << "\\Service" << number << "\\DAB]\n"
               << "\"NumberOutputs\"=\"" << (labelPort_ > 0 ? 1 : 0) << "\"\n\"ServerName1\"=\"localhost\"\n"
               << "\"ServerPort1\"=\"" << labelPort_ << "\"\n\"ServiceName1\"=\"x\"\n";
    WriteFile(Path("stations.reg"), settings.str());
    const Finished imported = Zebctl({"settings", "import", Path("stations.reg")});
    ASSERT_EQ(imported.status, 0) << imported.error;
  }
  void AddLinkedStations(int count) {
    AddStations(count, [this](int) {
      controls_.push_back(NextControlPort());
      std::ostringstream setting;
      setting << "\"TolvanTCPControlPort\"=dword:" << std::hex << controls_.back() << "\n";
      return setting.str();
    });
  }
  std::string SourceName(int number) const { return "onair" + std::to_string(number) + ".wsx"; }
  void AddPolledStations(int count) {
    for (int number = 1; number <= count; ++number)
      WriteFile(Path(SourceName(number)), "TITLE=Title " + std::to_string(number) + "\n");
    AddStations(count, [this](int number) {
      return "\"InfoSourceType\"=dword:b\n\"InfoSourceFileName\"=\"" + SourceName(number) + "\"\n";
    });
  }

  // No more descriptors than this, and no right to ask for more.
  void StartWithDescriptors(int limit) {
    std::vector<std::string> command = ZebdCommand();
    command.insert(command.begin(),
                   {"/bin/sh", "-c", "ulimit -n " + std::to_string(limit) + "; exec \"$@\"", "sh"});
    zebd = std::make_unique<Process>(command);
    ASSERT_TRUE(zebd->WaitForError("is ready")) << zebd->error;
  }
  // The numbers of the stations whose journal line holds `text`.
  std::vector<int> StationsWhoseLineHolds(const std::string& text) const {
    std::vector<int> found;
    std::istringstream lines(zebd->error);
    for (std::string line; std::getline(lines, line);)
      if (line.find(text) != std::string::npos && line.starts_with("Station "))
        found.push_back(std::stoi(line.substr(8)));
    return found;
  }

  static Socket LogOn(int port, const std::string& name) {
    Socket link = Socket::Connect(port);
    std::string answer;
    EXPECT_TRUE(link.Send("NET_CONTROL_LOGON " + name + "\r\n"));
    EXPECT_TRUE(link.ReceiveUntil(answer, "NET_CONTROL_GRANTED")) << port << ": " << answer;
    return link;
  }
  static void Play(const Socket& link, const std::string& title) {
    EXPECT_TRUE(link.Send("SET_CURRENT_ITEM IType=7 ITitle=\"" + title + "\"\r\n"));
  }

  int Threads() const {
    const std::string status = ReadFile("/proc/" + std::to_string(zebd->Id()) + "/status");
    return std::stoi(status.substr(status.find("Threads:") + 8));
  }
  void ExpectEnd() {
    zebd->Signal(SIGTERM);
    EXPECT_EQ(zebd->Wait(), 0) << zebd->error;
    EXPECT_NE(zebd->error.find("Stopped"), std::string::npos) << zebd->error;
  }

  // From now on each station that is added also has a label server there, looked up by its name.
  void UseLabelServer(int port) { labelPort_ = port; }

 private:
  int NextControlPort() {
    do ++lastControl_;
    while (!IsFree(lastControl_));
    return lastControl_;
  }

  // One of these tests at a time: two would look for their ports in the same place.
  class Turn {
   public:
    Turn() { EXPECT_EQ(::flock(lock_, LOCK_EX), 0) << "the lock file cannot be opened"; }
    ~Turn() { ::close(lock_); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    // What another user has made there may be opened, but not made.
    static int Open() {
      const auto path = std::filesystem::temp_directory_path() / "zeb-many-stations.lock";
      const int found = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
      return found >= 0 ? found : ::open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
    }
    const int lock_ = Open();
  };
  Turn turn_;
  int lastControl_ = kFirstPort - 6900;
  int labelPort_ = 0;
  std::vector<int> controls_;
};

TEST_F(ManyStationsTest, ThoseThatDescriptorsSufficeForWorkAndTheOthersAreNamed) {
  const int stations = 1100;
  const Socket silent = Socket::Listen();
  UseLabelServer(silent.Port());
  AddLinkedStations(stations);
  StartWithDescriptors(kUsualLimit);
  const std::vector<int> fit = StationsWhoseLineHolds(": listening on port ");
  const std::vector<int> left = StationsWhoseLineHolds(": too many open files, the limit is " +
                                                       std::to_string(kUsualLimit) + ": raise LimitNOFILE");
  EXPECT_GE(fit.size(), 400u);
  EXPECT_EQ(fit.size() + left.size(), static_cast<std::size_t>(stations)) << zebd->error;

  // All that fit are logged on to at a time, and publish, whatever their label servers' connections take.
  std::vector<Socket> links;
  for (const int number : fit) links.push_back(LogOn(PortOf(number), "playout"));
  for (std::size_t i = 0; i < fit.size(); ++i) Play(links[i], "Title " + std::to_string(fit[i]));
  for (const int number : fit)
    ASSERT_EQ(AwaitPage(PageName(number), "Title"), "Title " + std::to_string(number)) << zebd->error;

  // Idle connections take what is left for connections. Then they are turned away, and that is told.
  std::vector<Socket> idle;
  for (std::size_t i = 0; i < 100; ++i) idle.push_back(Socket::Connect(PortOf(fit[i])));
  EXPECT_TRUE(zebd->WaitForError("turned away 127.0.0.1: too many open files")) << zebd->error;
  // Those that run go on: files are open to them, and so is a log-on once a connection has gone.
  Play(links.front(), "Still here");
  EXPECT_EQ(AwaitPage(PageName(fit.front()), "Still"), "Still here") << zebd->error;
  idle.clear();
  links.back() = Socket();
  Play(LogOn(PortOf(fit.back()), "another"), "Anew");
  EXPECT_EQ(AwaitPage(PageName(fit.back()), "Anew"), "Anew") << zebd->error;
  ExpectEnd();
}

TEST_F(ManyStationsTest, AThousandItemsAtOnceTakeFewThreads) {
  const int stations = 1000;
  AddLinkedStations(stations);
  Start();
  for (int number = 1; number <= stations; ++number)
    Play(LogOn(PortOf(number), "playout"), "Title " + std::to_string(number));
  for (int number = 1; number <= stations; ++number)
    ASSERT_EQ(AwaitPage(PageName(number), "Title"), "Title " + std::to_string(number)) << zebd->error;
  EXPECT_LE(Threads(), kMostThreads);
  ExpectEnd();
}

TEST_F(ManyStationsTest, AThousandPolledFilesTakeFewThreads) {
  const int stations = 1000;
  AddPolledStations(stations);
  Start();
  for (int number = 1; number <= stations; ++number)
    ASSERT_EQ(AwaitPage(PageName(number), "Title"), "Title " + std::to_string(number)) << zebd->error;
  EXPECT_LE(Threads(), kMostThreads);
  ExpectEnd();
}

}  // namespace
}  // namespace zeb
