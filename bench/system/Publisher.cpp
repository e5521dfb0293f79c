#include "bench/system/Publisher.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "bench/system/Ports.h"
#include "bench/system/Zebd.h"

namespace zeb::bench {
namespace {

constexpr double kStartLimit = 60;

std::runtime_error Broken(const std::string& what) {
  return std::runtime_error(what + " (" + std::generic_category().message(errno) + ")");
}

// As editors write it, with a title now and then.
void WritePage(const std::filesystem::path& path) {
  std::ofstream page(path, std::ios::binary);
  page << "<html>\r\n<head><meta charset=\"utf-8\"><title><ZEB_NOW_ITEMNAME></title></head>\r\n<body>\r\n";
  for (int i = 0; i < 5; ++i)
    page << "<p><b><ZEB_NOW_ITEMNAME></b> by <ZEB_NOW_ARTISTS></p>\r\n"
            "<p class=\"text\">What is on the air now, and some ordinary text of the station's page.</p>\r\n"
            "<ul><li><a href=\"/shows\">Shows</a></li><li><a href=\"/team\">Team</a></li></ul>\r\n"
            "<p class=\"text\">More of it, with a picture: <img src=\"/images/logo.png\" alt=\"\"></p>\r\n";
  page << "</body>\r\n</html>\r\n";
}

std::string PageName(int service, int pair) {
  return std::to_string(service) + "-" + std::to_string(pair) + ".html";
}

// Temporary pages have other names.
std::optional<Arrival> ArrivalOf(const char* name, Moment at) {
  Arrival arrival{0, 0, at};
  if (std::sscanf(name, "%d-%d", &arrival.service, &arrival.pair) != 2) return std::nullopt;
  if (PageName(arrival.service, arrival.pair) != name) return std::nullopt;
  return arrival;
}

}  // namespace

std::string FolderOn(Medium medium) {
  const bool memory = medium == Medium::kMemory;
  const char* given = std::getenv(memory ? "ZEB_BENCH_MEMORY" : "ZEB_BENCH_DISK");
  const std::string folder = given ? given : memory ? "/dev/shm" : "/var/tmp";
  struct statfs system {};
  if (statfs(folder.c_str(), &system) != 0) throw Broken("cannot use the folder " + folder);
  if ((system.f_type == TMPFS_MAGIC) != memory)
    throw std::runtime_error(folder + (memory ? " is not in memory; set ZEB_BENCH_MEMORY to a folder that is"
                                              : " is not on a disk; set ZEB_BENCH_DISK to a folder that is"));
  return folder;
}

TemporaryFolder::TemporaryFolder(Medium medium) {
  std::string pattern = FolderOn(medium) + "/zebbenchXXXXXX";
  if (!mkdtemp(pattern.data())) throw Broken("cannot make a folder like " + pattern);
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

Publisher::Publisher(Kind kind, const Plan& plan)
    : kind_(kind), plan_(plan), home_(plan.medium), ports_(PortsFor(plan.services)) {
  std::filesystem::create_directories(home_.Path() / "www");
  for (int pair = 1; pair <= plan.pairs; ++pair)
    WritePage(home_.Path() / ("page-" + std::to_string(pair) + ".html"));
  if (IsZeb()) {
    SetUpFilePairs(home_.Path(), ports_, plan.services, plan.pairs);
    program_ = StartZebd(home_.Path(), Process::Cores::kBesideDriver).process;
  } else {
    program_ = std::make_unique<Process>(std::vector<std::string>{
        std::string(ZEB_PROGRAMS) + "/bench/zeb_bench_bare", home_.Path().string(), std::to_string(ports_),
        std::to_string(plan.services), std::to_string(plan.pairs)});
  }
  watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (watch_ < 0 || inotify_add_watch(watch_, (home_.Path() / "www").c_str(), IN_MOVED_TO) < 0)
    throw Broken("cannot watch the folder of the pages");
  for (int service = 1; service <= plan.services; ++service) {
    links_.push_back(Connect(service));
    if (IsZeb()) LogOn(links_.back());
  }
}

Publisher::~Publisher() {
  for (int link : links_) close(link);
  if (watch_ >= 0) close(watch_);
}

int Publisher::Connect(int service) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(ports_ + service));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const Moment start = Now();
  for (;;) {
    const int link = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (link < 0) throw Broken("cannot make a socket");
    if (connect(link, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
      const int one = 1;
      setsockopt(link, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
      return link;
    }
    close(link);
    program_->MustRun();
    if (Seconds(start, Now()) > kStartLimit)
      throw std::runtime_error("nothing listens for service " + std::to_string(service));
    Sleep(0.002);  // it is still starting
  }
}

void Publisher::LogOn(int link) {
  const std::string_view logOn = "NET_CONTROL_LOGON bench\r\n";
  const timeval limit{static_cast<time_t>(kStartLimit), 0};
  setsockopt(link, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  if (write(link, logOn.data(), logOn.size()) < 0) throw Broken("cannot log on");
  std::string answer;
  char buffer[256];
  while (answer.find("GET_INFORMATION") == std::string::npos) {
    const ssize_t got = read(link, buffer, sizeof buffer);
    if (got <= 0) throw Broken("no control granted");
    answer.append(buffer, static_cast<std::size_t>(got));
  }
}

int Publisher::Send(int service) {
  const std::string number = std::to_string(++item_);
  const std::string line = "SET_CURRENT_ITEM IType=7 IRef=\"" + number + "\" ITitle=\"Title " + number +
                           "\" AName1=\"Somebody Else\"\r\n";
  const int link = links_.at(static_cast<std::size_t>(service) - 1);
  if (write(link, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
    throw Broken("the link to a service broke");
  return item_;
}

void Publisher::Look(std::vector<Arrival>& arrivals) {
  alignas(inotify_event) char buffer[65536];
  ssize_t got = 0;
  while ((got = read(watch_, buffer, sizeof buffer)) > 0) {
    const Moment now = Now();
    for (ssize_t at = 0; at < got;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      if (event->mask & IN_Q_OVERFLOW) throw std::runtime_error("pages come faster than they are counted");
      if (event->len == 0) continue;
      if (const auto arrival = ArrivalOf(event->name, now)) arrivals.push_back(*arrival);
    }
  }
}

int Publisher::Shown(int service) const {
  std::ifstream file(home_.Path() / "www" / PageName(service, 1), std::ios::binary);
  const std::string page(std::istreambuf_iterator<char>(file), {});
  const std::string_view before = "<title>Title ";
  const std::size_t at = page.find(before);
  return at == std::string::npos ? 0 : std::atoi(page.c_str() + at + before.size());
}

}  // namespace zeb::bench
