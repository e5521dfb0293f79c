#include "platform/simulated/SimulatedFtp.h"

#include <algorithm>

namespace zeb {
namespace {

class Session : public FtpSession {
 public:
  explicit Session(SimulatedFtp& server) : server_(server) {}

  Outcome Open() override { return Ask("Open", ""); }
  Outcome Connect(const FtpTarget& target) override {
    connected_ = false;
    response_.clear();
    server_.lastTarget = target;
    ++server_.connections;
    if (Outcome asked = Ask("Connect", ""); !asked) return asked;
    connected_ = true;
    return {};
  }
  bool Connected() const override { return connected_; }
  Outcome Upload(const std::string& path, std::string_view bytes, const FtpProgress& progress) override {
    if (Outcome asked = Ask("Upload", path); !asked) return asked;
    for (std::size_t sent = 0; sent < bytes.size();) {
      sent = std::min(sent + kFtpBlockBytes, bytes.size());
      server_.files[path] = bytes.substr(0, sent);
      if (progress && !progress(sent)) return Failure{"cancelled"};
    }
    return {};
  }
  Result<bool> Exists(const std::string& path) override {
    if (Outcome asked = Ask("Exists", path); !asked) return Failure{asked.Reason()};
    return server_.files.count(path) > 0;
  }
  Outcome Rename(const std::string& from, const std::string& to) override {
    if (Outcome asked = Ask("Rename", from, to); !asked) return asked;
    // As strict servers do it.
    if (server_.files.count(from) == 0 || server_.files.count(to) > 0) return Answer("550 Rename failed.");
    server_.files[to] = server_.files[from];
    server_.files.erase(from);
    return {};
  }
  Outcome Delete(const std::string& path) override {
    if (Outcome asked = Ask("Delete", path); !asked) return asked;
    return server_.files.erase(path) > 0 ? Outcome() : Answer("550 Delete failed.");
  }
  Result<std::string> Download(const std::string& path, std::size_t limit) override {
    if (Outcome asked = Ask("Download", path); !asked) return Failure{asked.Reason()};
    const auto found = server_.files.find(path);
    if (found == server_.files.end() || found->second.size() > limit) return Failure{"550 No such file."};
    return found->second;
  }
  std::string LastResponse() const override { return response_; }
  void Close() override {
    if (connected_) server_.log.emplace_back("Close");
    connected_ = false;
  }

 private:
  Outcome Answer(const std::string& reply) {
    response_ = reply;
    if (reply.rfind("421", 0) == 0) connected_ = false;
    return Failure{reply};
  }
  Outcome Ask(const std::string& operation, const std::string& path, const std::string& to = "") {
    const bool needsConnection = operation != "Open" && operation != "Connect";
    if (needsConnection && !connected_) return Failure{"not connected"};
    server_.log.push_back(operation + (path.empty() ? "" : " " + path) + (to.empty() ? "" : " " + to));
    const std::string reply = server_.fail ? server_.fail(operation, path) : std::string();
    return reply.empty() ? Outcome() : Answer(reply);
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
