#include "bench/system/Ports.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace zeb::bench {
namespace {

// Above what is known by name, below what the system gives to connections going out.
constexpr int kFirst = 12000;
constexpr int kEnd = 32000;

bool IsFree(int port) {
  const int one = 1;
  const int tried = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (tried < 0) throw std::runtime_error("cannot make a socket");
  setsockopt(tried, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const bool isFree =
      bind(tried, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 && listen(tried, 1) == 0;
  close(tried);
  return isFree;
}

}  // namespace

int PortsFor(int services) {
  int inARow = 0;
  for (int port = kFirst; port < kEnd; ++port) {
    inARow = IsFree(port) ? inARow + 1 : 0;
    if (inARow == services) return port - services;
  }
  throw std::runtime_error("there are no " + std::to_string(services) + " free ports in a row");
}

}  // namespace zeb::bench
