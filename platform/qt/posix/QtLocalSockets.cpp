#include "platform/qt/posix/QtLocalSockets.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/qt/posix/LocalStream.h"

namespace zeb {

namespace {

constexpr int kBacklog = 64;
constexpr int kMostAtOnce = 16;  // connections taken in one turn
// How long a listener waits for descriptors or memory to come back.
constexpr Duration kPause = std::chrono::seconds(1);

std::string SystemReason(int error) {
  return std::generic_category().message(error);
}

// Closes with its scope.
struct Descriptor {
  int number = -1;
  explicit Descriptor(int given) : number(given) {}
  ~Descriptor() {
    if (number >= 0) close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Release() { return std::exchange(number, -1); }
};

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// A socket's name as the system takes it, usable while this lives.
class SocketName {
 public:
  explicit SocketName(const std::string& path)
      : folder_(open(FolderOf(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    address_.sun_family = AF_UNIX;
    if (folder_.number < 0) {
      error_ = errno;
      return;
    }
    std::string name = path;
    if (name.size() >= sizeof address_.sun_path)
      name = "/proc/self/fd/" + std::to_string(folder_.number) + path.substr(path.rfind('/'));
    if (name.size() >= sizeof address_.sun_path)
      error_ = ENAMETOOLONG;
    else
      std::memcpy(address_.sun_path, name.c_str(), name.size() + 1);
  }
  int Error() const { return error_; }
  const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&address_); }

 private:
  Descriptor folder_;
  sockaddr_un address_{};
  int error_ = 0;
};

int MakeSocket() {
  return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

struct FileIdentity {
  dev_t device;
  ino_t number;
  bool operator==(const FileIdentity&) const = default;
};

std::optional<FileIdentity> SocketAt(const std::string& path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0 || !S_ISSOCK(info.st_mode)) return std::nullopt;
  return FileIdentity{info.st_dev, info.st_ino};
}

// Removes a socket that nobody listens on any more. "" when the name is free then.
std::string RemoveLeftOver(const std::string& path, const SocketName& name) {
  if (!SocketAt(path)) return "there is something else of that name";
  const Descriptor probe(MakeSocket());
  if (probe.number < 0) return SystemReason(errno);
  if (connect(probe.number, name.Address(), sizeof(sockaddr_un)) == 0 || errno == EAGAIN)
    return "another program does";
  if (errno != ECONNREFUSED) return "there is one already, and trying it failed: " + SystemReason(errno);
  return unlink(path.c_str()) == 0 || errno == ENOENT ? "" : SystemReason(errno);
}

// Binds under a lock on the folder: of two programs that both find a left-over, the slower one must not
// remove what the faster one has put in its place.
std::string Bind(int descriptor, const std::string& path, const SocketName& name) {
  const Descriptor folder(open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.number < 0) return SystemReason(errno);
  if (flock(folder.number, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    return "another program is about to";
  for (bool again = false;; again = true) {
    // The rights are the socket's own before it has a name: there is no moment in which others may open it.
    if (fchmod(descriptor, 0600) != 0) return SystemReason(errno);
    if (bind(descriptor, name.Address(), sizeof(sockaddr_un)) == 0) break;
    if (errno != EADDRINUSE || again) return SystemReason(errno);
    if (std::string problem = RemoveLeftOver(path, name); !problem.empty()) return problem;
  }
  // Before the lock goes: a socket that does not listen yet looks like a left-over.
  if (listen(descriptor, kBacklog) == 0) return "";
  std::string problem = SystemReason(errno);
  unlink(path.c_str());
  return problem;
}

// An administrator's start by hand must not lock the service's own account out.
void GiveToFolderOwner(const std::string& path) {
  struct stat folder {};
  if (geteuid() == 0 && stat(FolderOf(path).c_str(), &folder) == 0 && folder.st_uid != 0)
    (void)(lchown(path.c_str(), folder.st_uid, folder.st_gid) == 0);
}

std::optional<gid_t> FindGroup(const std::string& name) {
  std::vector<char> space(64 * 1024);
  group found{};
  group* result = nullptr;
  if (getgrnam_r(name.c_str(), &found, space.data(), space.size(), &result) != 0 || !result)
    return std::nullopt;
  return result->gr_gid;
}

class QtLocalListener : public LocalListener {
 public:
  explicit QtLocalListener(std::shared_ptr<LocalStreams> streams) : streams_(std::move(streams)) {}
  ~QtLocalListener() override { QtLocalListener::Close(); }

  Outcome Listen(const std::string& path) override {
    Close();
    const auto fail = [&](const std::string& reason) {
      return Failure{"cannot listen on '" + path + "': " + reason};
    };
    const SocketName name(path);
    if (name.Error() != 0) return fail(SystemReason(name.Error()));
    Descriptor made(MakeSocket());
    if (made.number < 0) return fail(SystemReason(errno));
    if (const std::string problem = Bind(made.number, path, name); !problem.empty()) return fail(problem);
    GiveToFolderOwner(path);
    descriptor_ = made.Release();
    path_ = path;
    identity_ = SocketAt(path);
    Watch();
    return {};
  }

  Outcome AdmitGroup(const std::string& name) override {
    const auto fail = [&](const std::string& reason) {
      return Failure{"cannot admit the group '" + name + "' to '" + path_ + "': " + reason};
    };
    if (descriptor_ < 0) return fail("the socket is closed");
    const auto number = FindGroup(name);
    if (!number) return fail("there is no such group");
    if (lchown(path_.c_str(), static_cast<uid_t>(-1), *number) != 0 || chmod(path_.c_str(), 0660) != 0)
      return fail(SystemReason(errno));
    return {};
  }

  void Close() override {
    pause_.Stop();
    Unwatch();
    if (descriptor_ < 0) return;
    if (identity_ && SocketAt(path_) == identity_) unlink(path_.c_str());
    close(std::exchange(descriptor_, -1));
  }

 private:
  void Watch() {
    watch_ = std::make_shared<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(watch_.get(), &QSocketNotifier::activated, watch_.get(), [this] { Accept(); });
  }

  void Unwatch() {
    if (!watch_) return;
    watch_->setEnabled(false);
    // It may be what calls.
    streams_->loop.Post([gone = std::exchange(watch_, nullptr)] {});
  }

  // Who is called may close or destroy the listener.
  void Accept() {
    const std::weak_ptr<QSocketNotifier> mine = watch_;
    for (int left = kMostAtOnce; left > 0 && !mine.expired() && watch_; --left) {
      const int taken = accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
      if (taken < 0) {
        if (errno == EINTR || errno == ECONNABORTED) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) Pause();
        return;
      }
      auto connection = MakeLocalConnection(streams_, taken);
      const std::weak_ptr<bool> alive = alive_;
      if (const auto callback = onConnection) callback(std::move(connection));
      if (alive.expired()) return;
    }
  }

  void Pause() {
    Unwatch();
    pause_ = streams_->loop.After(kPause, [this] { Watch(); });
  }

  std::shared_ptr<LocalStreams> streams_;
  std::shared_ptr<QSocketNotifier> watch_;
  int descriptor_ = -1;
  std::string path_;
  std::optional<FileIdentity> identity_;
  Timer pause_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace

QtLocalSockets::QtLocalSockets(EventLoop& loop) : streams_(std::make_shared<LocalStreams>(loop)) {}

// Leaving streams hold what they share, so that must let go of them.
QtLocalSockets::~QtLocalSockets() {
  const auto leaving = std::exchange(streams_->leaving, {});
}

std::unique_ptr<LocalListener> QtLocalSockets::MakeLocalListener() {
  return std::make_unique<QtLocalListener>(streams_);
}

LocalLink QtLocalSockets::ConnectLocal(const std::string& path) {
  const auto fail = [&](int error) {
    return LocalLink{nullptr, error == ECONNREFUSED || error == ENOENT,
                     "cannot connect to '" + path +
                         "': " + (error == EAGAIN ? "it has too many connections" : SystemReason(error))};
  };
  const SocketName name(path);
  if (name.Error() != 0) return fail(name.Error());
  Descriptor made(MakeSocket());
  if (made.number < 0) return fail(errno);
  if (connect(made.number, name.Address(), sizeof(sockaddr_un)) != 0) return fail(errno);
  return {MakeLocalConnection(streams_, made.Release()), false, ""};
}

}  // namespace zeb
