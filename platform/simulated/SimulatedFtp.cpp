#include "platform/simulated/SimulatedFtp.h"

#include <algorithm>
#include <array>

#include "text/Paths.h"

namespace zeb {
namespace {

class Session : public FtpSession {
 public:
  explicit Session(SimulatedFtp& server) : server_(server) {}

  Outcome Open() override {
    return Do("Open", "", [] { return std::string(); });
  }
  Outcome Connect(const FtpTarget& target) override {
    connected_ = false;
    server_.lastTarget = target;
    ++server_.connections;
    return Do("Connect", "", [this] {
      connected_ = true;
      return std::string();
    });
  }
  bool Connected() const override { return connected_; }
  Outcome Probe() override {
    return Do("Probe", "/", [] { return std::string(); });
  }
  Outcome Upload(const std::string& path, const FtpSource& source) override {
    return Do("Upload", path, [&] { return Store(path, source); });
  }
  Result<bool> Exists(const std::string& path) override {
    bool exists = false;
    const Outcome asked = Do("Exists", path, [&] {
      exists = server_.files.count(path) > 0;
      return std::string(exists ? "" : "550 Could not get file size.");
    });
    if (asked || (connected_ && response_ == "550 Could not get file size.")) return exists;
    return asked.AsFailure();
  }
  Outcome Rename(const std::string& from, const std::string& to) override {
    return Do(
        "Rename", from,
        [&]() -> std::string {
          if (server_.files.count(from) == 0) return "550 RNFR command failed.";
          if (!CanHold(to) || (server_.files.count(to) > 0 && !server_.replaces)) return "550 Rename failed.";
          if (from == to) return {};
          server_.files[to] = std::move(server_.files[from]);
          server_.files.erase(from);
          return {};
        },
        to);
  }
  Outcome Delete(const std::string& path) override {
    return Do("Delete", path, [&]() -> std::string {
      return server_.files.erase(path) > 0 ? "" : "550 Delete operation failed.";
    });
  }
  Result<std::string> Download(const std::string& path, std::size_t limit) override {
    std::string bytes;
    const Outcome done = Do("Download", path, [&]() -> std::string {
      const auto found = server_.files.find(path);
      if (found == server_.files.end()) return "550 Failed to open file.";
      bytes = found->second;
      return {};
    });
    if (!done) return done.AsFailure();
    if (bytes.size() > limit) return Failure{"cannot download '" + path + "': it is too large"};
    return bytes;
  }
  std::string LastResponse() const override { return response_; }
  void Close() override {
    if (connected_) static_cast<void>(Do("Close", "", [] { return std::string(); }));
    connected_ = false;
  }
  void Cancel() override { server_.cancelled = true; }

 private:
  bool CanHold(const std::string& path) const {
    return server_.folders.count(std::string(FolderPart(path))) > 0;
  }

  std::string Store(const std::string& path, const FtpSource& source) {
    if (!CanHold(path)) return "553 Could not create file.";
    std::string& file = server_.files[path];
    file.clear();
    std::array<char, kFtpBlockBytes> block;
    while (file.size() < source.size) {
      if (std::string reply = Ask("Block", path); !reply.empty()) return reply;
      const auto most = std::min<std::uint64_t>(block.size(), source.size - file.size());
      const std::optional<std::size_t> got = source.read(block.data(), static_cast<std::size_t>(most));
      if (!got || *got == 0) return "ended";
      file.append(block.data(), *got);
    }
    return {};
  }

  std::string Ask(const std::string& operation, const std::string& path) const {
    return server_.fail ? server_.fail(operation, path) : std::string();
  }

  // `work` is what the server does: its reply, "" when it has done it.
  Outcome Do(const std::string& operation, const std::string& path, const std::function<std::string()>& work,
             const std::string& to = "") {
    response_.clear();
    const bool needsConnection = operation != "Open" && operation != "Connect";
    if (needsConnection && !connected_) return Failure{"not connected"};
    const bool controls = (path + to).find_first_of("\r\n") != std::string::npos;
    if ((needsConnection && operation != "Close" && path.empty()) || controls)
      return Failure{"'" + path + to + "' is no name of a server file"};
    server_.log.push_back(operation + (path.empty() ? "" : " " + path) + (to.empty() ? "" : " " + to));
    std::string reply = Ask(operation, path);
    bool isLost = reply == "LOST";
    if (reply.empty() || isLost) reply = work();
    isLost = isLost || reply == "LOST";  // in the middle of an upload
    if (isLost || reply.rfind("421", 0) == 0) connected_ = false;
    if (isLost) return Failure{"cannot " + operation + " '" + path + "': the connection was lost"};
    if (reply.empty()) return {};
    if (reply[0] >= '1' && reply[0] <= '5') response_ = reply;
    return Failure{"cannot " + operation + " '" + path + "': " + reply};
  }

  SimulatedFtp& server_;
  bool connected_ = false;
  std::string response_;
};

}  // namespace

std::unique_ptr<FtpSession> SimulatedFtp::Make() {
  return std::make_unique<Session>(*this);
}

}  // namespace zeb
