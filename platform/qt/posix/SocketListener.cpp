#include "platform/qt/posix/SocketListener.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <system_error>
#include <utility>

#include "platform/qt/Listeners.h"
#include "platform/qt/QtNetworkState.h"
#include "platform/qt/posix/DescriptorWatch.h"
#include "platform/qt/posix/SocketConnection.h"

namespace zeb {

namespace {

constexpr int kBacklog = 128;
constexpr int kMostAtOnce = 16;  // connections taken in one turn
// How long a listener waits for descriptors or memory to come back. Asking at once would keep a processor
// busy.
constexpr Duration kPause = std::chrono::seconds(1);

union Address {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
  sockaddr_storage space;
};

std::string SystemReason(int error) {
  return std::generic_category().message(error);
}

// False: not an address.
bool Parse(const std::string& text, std::uint16_t port, Address& address, socklen_t& size) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(text.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return false;
  size = found->ai_addrlen;
  std::copy_n(reinterpret_cast<const char*>(found->ai_addr), size, reinterpret_cast<char*>(&address));
  freeaddrinfo(found);
  return true;
}

// A listening socket, or the error's negative.
int OpenAt(const Address& address, socklen_t size, bool bothFamilies) {
  const int descriptor =
      socket(address.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP);
  if (descriptor < 0) return -errno;
  const int on = 1, only6 = bothFamilies ? 0 : 1;
  setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (address.any.sa_family == AF_INET6)
    setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &only6, sizeof only6);
  if (bind(descriptor, &address.any, size) == 0 && listen(descriptor, kBacklog) == 0) return descriptor;
  const int error = errno;
  close(descriptor);
  return -error;
}

// All interfaces, IPv4 and IPv6; IPv4 alone where the system has no other.
int OpenEverywhere(std::uint16_t port) {
  Address address{};
  address.v6.sin6_family = AF_INET6;
  address.v6.sin6_port = htons(port);
  const int descriptor = OpenAt(address, sizeof address.v6, true);
  if (descriptor != -EAFNOSUPPORT && descriptor != -EADDRNOTAVAIL) return descriptor;
  address = {};
  address.v4.sin_family = AF_INET;
  address.v4.sin_port = htons(port);
  return OpenAt(address, sizeof address.v4, false);
}

// An IPv4 peer of a listener on all interfaces comes as ::ffff:192.0.2.7.
SocketConnection::Peer PeerOf(const Address& address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (address.any.sa_family == AF_INET) {
    inet_ntop(AF_INET, &address.v4.sin_addr, text.data(), text.size());
    return {text.data(), ntohs(address.v4.sin_port)};
  }
  const in6_addr& v6 = address.v6.sin6_addr;
  if (IN6_IS_ADDR_V4MAPPED(&v6))
    inet_ntop(AF_INET, &v6.s6_addr[12], text.data(), text.size());
  else
    inet_ntop(AF_INET6, &v6, text.data(), text.size());
  return {text.data(), ntohs(address.v6.sin6_port)};
}

std::uint16_t PortOf(int descriptor) {
  Address address{};
  socklen_t size = sizeof address;
  getsockname(descriptor, &address.any, &size);
  return ntohs(address.any.sa_family == AF_INET ? address.v4.sin_port : address.v6.sin6_port);
}

bool MeansNoRoom(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

// What one listener and its connections take of the budget: a place for the listener and one for the
// connection that may come, however many others there are; the further ones take places of their own.
class SocketListener::Places : public std::enable_shared_from_this<Places> {
 public:
  explicit Places(DescriptorBudget& budget) : budget_(budget) { budget_.Take(2); }
  ~Places() { budget_.GiveBack(1); }
  Places(const Places&) = delete;
  Places& operator=(const Places&) = delete;

  // For a connection, as long as it keeps it; null: there is none.
  SocketConnection::Place Take(int descriptor) {
    if (connections_ > 0 && !budget_.AllowsConnection(descriptor)) return nullptr;
    if (connections_++ > 0) budget_.Take(1);
    return {this, [self = shared_from_this()](Places* places) { places->GiveBack(); }};
  }
  void EndListening() { budget_.GiveBack(1); }

 private:
  void GiveBack() {
    if (--connections_ > 0) budget_.GiveBack(1);
  }
  DescriptorBudget& budget_;
  std::size_t connections_ = 0;
};

struct SocketListener::Open {
  Open(DescriptorBudget& budget, int givenDescriptor)
      : descriptor(givenDescriptor), port(PortOf(descriptor)), places(std::make_shared<Places>(budget)) {}
  ~Open() {
    watch.reset();
    close(descriptor);
    places->EndListening();
  }
  Open(const Open&) = delete;
  Open& operator=(const Open&) = delete;

  const int descriptor;
  const std::uint16_t port;
  const std::shared_ptr<Places> places;
  std::unique_ptr<DescriptorWatch> watch;
  Timer pause;
};

SocketListener::SocketListener(std::shared_ptr<QtNetworkState> network) : network_(std::move(network)) {}

SocketListener::~SocketListener() = default;

Outcome SocketListener::Listen(const std::string& address, std::uint16_t port) {
  Close();
  Address where{};
  socklen_t size = 0;
  if (!address.empty() && !Parse(address, port, where, size))
    return Failure{"cannot listen on '" + address + "': not an address"};
  const int descriptor = address.empty() ? OpenEverywhere(port) : OpenAt(where, size, false);
  const std::string place =
      "cannot listen on " + (address.empty() ? "port " : address + ":") + std::to_string(port) + ": ";
  if (descriptor < 0)
    return Failure{place + (descriptor == -EMFILE ? network_->budget.Reason() : SystemReason(-descriptor))};
  if (!network_->budget.AllowsListener(descriptor)) {
    close(descriptor);
    return Failure{place + network_->budget.Reason()};
  }
  open_ = std::make_shared<Open>(network_->budget, descriptor);
  Watch();
  return {};
}

void SocketListener::Close() {
  open_.reset();
}

std::uint16_t SocketListener::Port() const {
  return open_ ? open_->port : std::uint16_t{0};
}

void SocketListener::Watch() {
  open_->watch = std::make_unique<DescriptorWatch>(network_->loop, open_->descriptor, DescriptorWatch::kRead,
                                                   [this, weak = std::weak_ptr(open_)] { Accept(weak); });
}

// Who is called may close or destroy the listener.
void SocketListener::Accept(const std::weak_ptr<Open>& open) {
  for (int left = kMostAtOnce; left > 0 && !open.expired(); --left)
    if (!AcceptOne()) return;
}

// False: there is none, for now.
bool SocketListener::AcceptOne() {
  Address address{};
  socklen_t size = sizeof address;
  const int descriptor = accept4(open_->descriptor, &address.any, &size, SOCK_CLOEXEC | SOCK_NONBLOCK);
  if (descriptor < 0) {
    const int error = errno;
    if (MeansNoRoom(error)) Pause(error);
    return error == ECONNABORTED || error == EINTR;
  }
  const SocketConnection::Peer peer = PeerOf(address);
  SocketConnection::Place place = open_->places->Take(descriptor);
  if (!place) {
    close(descriptor);
    TellTrouble("turned away " + peer.address + ": " + network_->budget.Reason());
    return true;
  }
  auto connection = std::make_unique<SocketConnection>(network_, descriptor, peer, std::move(place));
  if (const auto callback = onConnection) callback(std::move(connection));
  return true;
}

void SocketListener::Pause(int error) {
  open_->watch.reset();
  open_->pause = network_->loop.After(kPause, [this] { Watch(); });
  TellTrouble("cannot take connections: " +
              (error == EMFILE ? network_->budget.Reason() : SystemReason(error)));
}

void SocketListener::TellTrouble(const std::string& what) {
  if (const auto callback = onTrouble) callback(what);
}

std::unique_ptr<TcpListener> MakeSocketListener(std::shared_ptr<QtNetworkState> network) {
  return std::make_unique<SocketListener>(std::move(network));
}

}  // namespace zeb
