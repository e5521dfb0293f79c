// The bare program: the least that does for N services what a publisher does, to measure ours against. One
// thread and plain sockets; a line comes in, its title and artist are put into the template by search and
// replace, each page is written beside its place and renamed over the old one.
//
//     zeb_bench_bare FOLDER FIRST-PORT SERVICES PAIRS
//
// Service i, from 1, listens on FIRST-PORT + i. Pair p of each makes FOLDER/www/i-p.html of
// FOLDER/page-p.html. A template is kept, and looked at each time, since an edit of it must show with the
// next item.
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

[[noreturn]] void Give(const std::string& what) {
  std::perror(what.c_str());
  std::exit(1);
}

std::string Read(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) Give(path);
  char buffer[65536];
  const ssize_t got = read(file, buffer, sizeof buffer);
  if (got < 0) Give(path);
  close(file);
  return std::string(buffer, static_cast<std::size_t>(got));
}

void Replace(const std::string& path, std::string_view page) {
  const std::string beside = path + ".tmp";
  const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (file < 0) Give(beside);
  if (write(file, page.data(), page.size()) != static_cast<ssize_t>(page.size())) Give(beside);
  close(file);
  if (rename(beside.c_str(), path.c_str()) != 0) Give(path);
}

std::string_view ValueOf(std::string_view line, std::string_view key) {
  std::size_t at = line.find(key);
  if (at == std::string_view::npos) return {};
  line.remove_prefix(at + key.size());
  return line.substr(0, line.find('"'));
}

std::string Filled(std::string_view page, std::string_view tag, std::string_view value) {
  std::string filled;
  filled.reserve(page.size() + 1024);
  for (std::size_t at; (at = page.find(tag)) != std::string_view::npos; page.remove_prefix(at + tag.size()))
    filled.append(page.substr(0, at)).append(value);
  return filled.append(page);
}

struct Template {
  timespec modified{};
  off_t size = -1;
  std::string text;
};

class Publisher {
 public:
  Publisher(std::string folder, int pairs)
      : folder_(std::move(folder)), templates_(static_cast<std::size_t>(pairs)) {}

  void Publish(int service, std::string_view line) {
    const std::string_view title = ValueOf(line, " ITitle=\""), artist = ValueOf(line, " AName1=\"");
    if (title.empty()) return;
    for (std::size_t pair = 1; pair <= templates_.size(); ++pair) {
      const std::string page = Filled(Current(pair), "<ZEB_NOW_ITEMNAME>", title);
      Replace(folder_ + "/www/" + std::to_string(service) + "-" + std::to_string(pair) + ".html",
              Filled(page, "<ZEB_NOW_ARTISTS>", artist));
    }
  }

 private:
  const std::string& Current(std::size_t pair) {
    const std::string path = folder_ + "/page-" + std::to_string(pair) + ".html";
    Template& kept = templates_[pair - 1];
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) Give(path);
    if (kept.size != status.st_size || kept.modified.tv_sec != status.st_mtim.tv_sec ||
        kept.modified.tv_nsec != status.st_mtim.tv_nsec)
      kept = {status.st_mtim, status.st_size, Read(path)};
    return kept.text;
  }

  std::string folder_;
  std::vector<Template> templates_;
};

int Listen(int port) {
  const int one = 1;
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, 5) != 0)
    Give("port " + std::to_string(port));
  return listener;
}

struct Link {
  int service;
  bool listens;
  std::string waiting;  // the beginning of a line
};

// False: the peer is gone.
bool Take(int socket, Link& link, Publisher& publisher) {
  char buffer[4096];
  const ssize_t got = read(socket, buffer, sizeof buffer);
  if (got <= 0) return false;
  link.waiting.append(buffer, static_cast<std::size_t>(got));
  for (std::size_t end; (end = link.waiting.find('\n')) != std::string::npos; link.waiting.erase(0, end + 1))
    publisher.Publish(link.service, std::string_view(link.waiting).substr(0, end));
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 5) return 2;
  const int firstPort = std::atoi(arguments[2]), services = std::atoi(arguments[3]);
  Publisher publisher(arguments[1], std::atoi(arguments[4]));
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  files.rlim_cur = files.rlim_max;
  setrlimit(RLIMIT_NOFILE, &files);

  std::map<int, Link> links;
  const int waiter = epoll_create1(EPOLL_CLOEXEC);
  const auto watch = [&](int socket, int service, bool listens) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = socket;
    if (epoll_ctl(waiter, EPOLL_CTL_ADD, socket, &event) != 0) Give("epoll");
    links[socket] = {service, listens, {}};
  };
  for (int service = 1; service <= services; ++service) watch(Listen(firstPort + service), service, true);
  for (;;) {
    epoll_event events[64];
    const int ready = epoll_wait(waiter, events, 64, -1);
    for (int i = 0; i < ready; ++i) {
      const int socket = events[i].data.fd;
      Link& link = links[socket];
      if (link.listens) {
        const int peer = accept4(socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (peer >= 0) watch(peer, link.service, false);
      } else if (!Take(socket, link, publisher)) {
        close(socket);
        links.erase(socket);
      }
    }
  }
}
