// The whole road, against the real program: a line on the control link to the finished file in its place.
//
// Starts zebd on a temporary data folder with N services, InstantUpdate on and one file pair each, connects
// to every control port as the playout system does, and measures from the moment a line is written to the
// socket until the kernel reports the rename over the destination (inotify). Times are wall times of this
// machine.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kFirstControlNumber = 10000;  // TCP ports 16900 and up: no station's

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string RegText(const std::filesystem::path& home, int services) {
  auto quoted = [](const std::string& text) {
    std::string out;
    for (char c : text) {
      if (c == '\\' || c == '"') out += '\\';
      out += c;
    }
    return '"' + out + '"';
  };
  const std::string root = "HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1";
  char number[16];
  std::snprintf(number, sizeof number, "%08x", static_cast<unsigned>(services));
  std::string reg = "Windows Registry Editor Version 5.00\r\n\r\n[" + root +
                    "]\r\n\"NumberServices\"=dword:" + number + "\r\n";
  for (int i = 1; i <= services; ++i) {
    const std::string key = root + "\\Service" + std::to_string(i);
    std::snprintf(number, sizeof number, "%08x", static_cast<unsigned>(kFirstControlNumber + i));
    reg += "\r\n[" + key + "]\r\n\"ServiceName\"=\"Station " + std::to_string(i) +
           "\"\r\n\"InstantUpdate\"=dword:00000001\r\n\"TolvanTCPControlPort\"=dword:" + number +
           "\r\n\r\n[" + key +
           "\\File]\r\n\"NumberOutputs\"=\"1\"\r\n\"Output1.NumberFiles\"=\"1\"\r\n\"Output1."
           "SourceFileName1\"=" +
           quoted((home / "page.html").string()) + "\r\n\"Output1.DestinationFileName1\"=" +
           quoted((home / "www" / (std::to_string(i) + ".html")).string()) + "\r\n";
  }
  return reg;
}

// zebd with N services, and a controller's connection to each.
class Station {
 public:
  explicit Station(int services) : services_(services) {
    std::string pattern = (std::filesystem::temp_directory_path() / "zebbenchXXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make a temporary folder");
    home_ = pattern;
    std::filesystem::create_directories(home_ / "www");
    std::ofstream page(home_ / "page.html", std::ios::binary);
    page << "<html>\r\n<head><meta charset=\"utf-8\"><title>Now</title></head>\r\n<body>\r\n";
    for (int i = 0; i < 20; ++i)
      page << "<p>[(<ZEB_NOW_ITEMNAME>!=)<b><ZEB_NOW_ITEMNAME></b> by <ZEB_NOW_ARTISTS>]</p>\r\n";
    page << "</body>\r\n</html>\r\n";
    page.close();
    std::ofstream(home_ / "services.reg", std::ios::binary) << RegText(home_, services);
    const std::string programs = ZEB_PROGRAMS;
    const std::string import = programs + "/zebctl --home " + home_.string() + " settings import " +
                               (home_ / "services.reg").string();
    if (std::system(import.c_str()) != 0) throw std::runtime_error("cannot import the settings");
    const std::string program = programs + "/zebd";
    process_ = fork();
    if (process_ == 0) {
      const int journal = open((home_ / "journal").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      dup2(journal, 1);
      dup2(journal, 2);
      execl(program.c_str(), "zebd", "--home", home_.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    inotify_add_watch(watch_, (home_ / "www").c_str(), IN_MOVED_TO);
    for (int i = 1; i <= services; ++i) links_.push_back(LogOn(kFirstControlNumber + 6900 + i));
  }
  ~Station() {
    for (int link : links_) close(link);
    close(watch_);
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
    std::filesystem::remove_all(home_);
  }
  Station(const Station&) = delete;
  Station& operator=(const Station&) = delete;

  // Sends a new item to every service; the time from its own line to its file in place, for each, sorted; and
  // the time until the last one is there.
  std::vector<double> SendEverywhere(double& untilAll) {
    ++item_;
    sent_.assign(static_cast<std::size_t>(services_), {});
    std::vector<double> times;
    const auto start = Clock::now();
    for (std::size_t i = 0; i < links_.size(); ++i) {
      const std::string line = "SET_CURRENT_ITEM IType=7 IRef=\"" + std::to_string(item_) +
                               "\" ITitle=\"Title " + std::to_string(item_) +
                               "\" AName1=\"Somebody\" AName2=\"Somebody Else\"\r\n";
      sent_[i] = Clock::now();
      if (write(links_[i], line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        throw std::runtime_error("a control link broke");
      Collect(times, 0);
    }
    while (times.size() < links_.size()) {
      if (SecondsSince(start) > 60) throw std::runtime_error("not everything was published within 60 s");
      Collect(times, 1000);
    }
    untilAll = SecondsSince(start);
    std::sort(times.begin(), times.end());
    return times;
  }

  double ProcessorSeconds() const {
    std::ifstream stat("/proc/" + std::to_string(process_) + "/stat");
    std::string word;
    for (int i = 0; i < 13; ++i) stat >> word;
    double user = 0, system = 0;
    stat >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
  }
  double ResidentMegabytes() const {
    std::ifstream statm("/proc/" + std::to_string(process_) + "/statm");
    double total = 0, resident = 0;
    statm >> total >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
  }

 private:
  int LogOn(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto start = Clock::now();
    for (;;) {
      const int link = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
      if (connect(link, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        const std::string logOn = "NET_CONTROL_LOGON bench\r\n";
        if (write(link, logOn.data(), logOn.size()) < 0) throw std::runtime_error("cannot log on");
        std::string answer;
        char buffer[256];
        while (answer.find("GET_INFORMATION") == std::string::npos) {
          const ssize_t got = read(link, buffer, sizeof buffer);
          if (got <= 0) throw std::runtime_error("no control granted");
          answer.append(buffer, static_cast<std::size_t>(got));
        }
        return link;
      }
      close(link);
      if (SecondsSince(start) > 30)
        throw std::runtime_error("zebd does not listen on port " + std::to_string(port));
      poll(nullptr, 0, 5);  // zebd is still starting
    }
  }

  void Collect(std::vector<double>& times, int milliseconds) {
    pollfd waiting{watch_, POLLIN, 0};
    if (poll(&waiting, 1, milliseconds) <= 0) return;
    alignas(inotify_event) char buffer[65536];
    ssize_t got;
    while ((got = read(watch_, buffer, sizeof buffer)) > 0) {
      const auto now = Clock::now();
      for (ssize_t at = 0; at < got;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        const int number = std::atoi(event->name);
        if (number >= 1 && number <= services_)
          times.push_back(
              std::chrono::duration<double>(now - sent_[static_cast<std::size_t>(number) - 1]).count());
      }
    }
  }

  int services_;
  std::filesystem::path home_;
  pid_t process_ = -1;
  int watch_ = -1;
  int item_ = 0;
  std::vector<int> links_;
  std::vector<Clock::time_point> sent_;
};

void BM_LinkToFile(benchmark::State& state) {
  Station station(static_cast<int>(state.range(0)));
  double untilAll = 0;
  station.SendEverywhere(untilAll);  // the first one warms the caches
  std::vector<double> all;
  for (auto _ : state) {
    // The update before is over: what arrives while it runs is published 1.5 s later by rule.
    poll(nullptr, 0, 20);
    const std::vector<double> times = station.SendEverywhere(untilAll);
    state.SetIterationTime(untilAll);
    all.insert(all.end(), times.begin(), times.end());
  }
  std::sort(all.begin(), all.end());
  state.counters["p50_ms"] = all[all.size() / 2] * 1e3;
  state.counters["p99_ms"] = all[all.size() * 99 / 100] * 1e3;
  state.counters["worst_ms"] = all.back() * 1e3;
}
BENCHMARK(BM_LinkToFile)->UseManualTime()->Unit(benchmark::kMillisecond)->Arg(1)->Iterations(500);
BENCHMARK(BM_LinkToFile)->UseManualTime()->Unit(benchmark::kMillisecond)->Arg(100)->Iterations(20);
BENCHMARK(BM_LinkToFile)->UseManualTime()->Unit(benchmark::kMillisecond)->Arg(1000)->Iterations(5);

// What zebd takes while nothing happens: memory, and processor time as a share of one core.
void BM_IdleServices(benchmark::State& state) {
  Station station(static_cast<int>(state.range(0)));
  poll(nullptr, 0, 2000);  // start-up is over
  for (auto _ : state) {
    const double before = station.ProcessorSeconds();
    const auto start = Clock::now();
    poll(nullptr, 0, 10000);
    const double elapsed = SecondsSince(start);
    state.SetIterationTime(elapsed);
    state.counters["core_percent"] = 100 * (station.ProcessorSeconds() - before) / elapsed;
    state.counters["resident_MB"] = station.ResidentMegabytes();
  }
}
BENCHMARK(BM_IdleServices)->UseManualTime()->Unit(benchmark::kSecond)->Arg(1)->Arg(1000)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
