#include "bench/system/Zebd.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "bench/system/Moment.h"

namespace zeb::bench {
namespace {

constexpr double kReadyLimit = 120;
constexpr int kPortOfNumberZero = 6900;

// What zebd tells a service manager arrives here.
class ReadySocket {
 public:
  ReadySocket() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    static int number = 0;
    name_ = "@zeb-bench-" + std::to_string(getpid()) + "-" + std::to_string(++number);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name_.data() + 1, name_.size() - 1);  // outside of the file system
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_.size());
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), length) != 0) {
      close(socket_);
      throw std::runtime_error("cannot make a socket for what zebd tells its service manager");
    }
  }
  ~ReadySocket() { close(socket_); }
  ReadySocket(const ReadySocket&) = delete;
  ReadySocket& operator=(const ReadySocket&) = delete;

  const std::string& Name() const { return name_; }
  bool Ready() {
    pollfd waiting{socket_, POLLIN, 0};
    if (poll(&waiting, 1, 1) <= 0) return false;
    char buffer[1024];
    const ssize_t got = recv(socket_, buffer, sizeof buffer, MSG_DONTWAIT);
    return got > 0 &&
           std::string_view(buffer, static_cast<std::size_t>(got)).find("READY=1") != std::string_view::npos;
  }

 private:
  int socket_;
  std::string name_;
};

std::string Number(int number) {
  char text[32];
  std::snprintf(text, sizeof text, "dword:%08x", static_cast<unsigned>(number));
  return text;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '\\' || c == '"') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

using ServiceLines = std::function<std::string(const std::string& key, int service)>;

void Import(const std::filesystem::path& home, int services, const ServiceLines& linesOf) {
  const std::string root = "HKEY_LOCAL_MACHINE\\Software\\Hexmoor\\ZEB v3\\Profiles\\Profile1";
  std::ofstream reg(home / "services.reg", std::ios::binary);
  reg << "Windows Registry Editor Version 5.00\r\n\r\n[" << root
      << "]\r\n\"NumberServices\"=" << Number(services) << "\r\n\"HistoryDays\"=" << Number(0)
      << "\r\n\"DashboardPort\"=" << Number(0) << "\r\n";
  for (int i = 1; i <= services; ++i) {
    const std::string key = root + "\\Service" + std::to_string(i);
    reg << "\r\n[" << key << "]\r\n\"ServiceName\"=\"Station " << i << "\"\r\n" << linesOf(key, i);
  }
  reg.close();
  const std::string import = std::string(ZEB_PROGRAMS) + "/zebctl --home " + home.string() +
                             " settings import " + (home / "services.reg").string() + " >/dev/null";
  if (!reg || std::system(import.c_str()) != 0) throw std::runtime_error("cannot import the settings");
}

}  // namespace

void SetUpFilePairs(const std::filesystem::path& home, int ports, int services, int pairs) {
  Import(home, services, [&](const std::string& key, int service) {
    std::string lines = "\"InstantUpdate\"=dword:00000001\r\n\"TolvanTCPControlPort\"=" +
                        Number(ports - kPortOfNumberZero + service) + "\r\n\r\n[" + key +
                        "\\File]\r\n\"NumberOutputs\"=\"1\"\r\n\"Output1.NumberFiles\"=\"" +
                        std::to_string(pairs) + "\"\r\n";
    for (int pair = 1; pair <= pairs; ++pair) {
      const std::string number = std::to_string(pair);
      lines += "\"Output1.SourceFileName" + number +
               "\"=" + Quoted((home / ("page-" + number + ".html")).string()) +
               "\r\n\"Output1.DestinationFileName" + number +
               "\"=" + Quoted((home / "www" / (std::to_string(service) + "-" + number + ".html")).string()) +
               "\r\n";
    }
    return lines;
  });
}

void SetUpPolledFiles(const std::filesystem::path& home, int services) {
  for (int i = 1; i <= services; ++i) {
    const std::filesystem::path folder = home / "in" / std::to_string(i);
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "onair.wsx")
        << "RADIO=Station " << i << "\r\nTYPE=SONG\r\nECH=12:34:56\r\nTITLE=Title\r\nARTIST=Somebody\r\n";
  }
  Import(home, services, [&](const std::string&, int service) {
    return "\"InfoSourceType\"=" + Number(11) + "\r\n\"InfoSourceFileName\"=" +
           Quoted((home / "in" / std::to_string(service) / "onair.wsx").string()) + "\r\n";
  });
}

StartedZebd StartZebd(const std::filesystem::path& home, Process::Cores cores) {
  ReadySocket manager;
  const Moment start = Now();
  // Temporary files belong to the medium that is measured, and go with the folder.
  auto process = std::make_unique<Process>(
      std::vector<std::string>{std::string(ZEB_PROGRAMS) + "/zebd", "--home", home.string()},
      std::vector<std::string>{"NOTIFY_SOCKET=" + manager.Name(), "TMPDIR=" + home.string()}, cores);
  while (!manager.Ready()) {
    process->Listen();
    process->MustRun();
    if (Seconds(start, Now()) > kReadyLimit) throw std::runtime_error("zebd does not become ready");
  }
  return {std::move(process), Seconds(start, Now())};
}

}  // namespace zeb::bench
